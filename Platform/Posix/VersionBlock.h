#ifndef PLATFORM_POSIX_VERSION_BLOCK_H
#define PLATFORM_POSIX_VERSION_BLOCK_H

/* The version block: section ".kxra.version" of an ELF file, little-endian, without gaps.
 *
 *   8 bytes          magic
 *   13 x 32 bits     fixed file information (SFixedVersion)
 *   32 bits          number of translations, n
 *   n x 2 x 16 bits  language and code page of each
 *   then per translation, in the same order: pairs of NUL-terminated texts, key and text, closed by an empty key
 *
 * Written by kxra_version_block() of the build, read by Module's version queries. Plain C, for the generated
 * source. */
#define KXRA_VERSION_SECTION ".kxra.version"
#define KXRA_VERSION_MAGIC "KXRAVER1"
#define KXRA_VERSION_MAGIC_SIZE 8
#define KXRA_VERSION_FIXED_WORDS 13
#define KXRA_VERSION_SIGNATURE 0xFEEF04BDu

#endif
