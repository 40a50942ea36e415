#ifndef VLK_EXPORT_H
#define VLK_EXPORT_H

/// Marks the classes and functions that the foundation offers to other modules of the product.
/// VLK_BUILD is defined while the module that holds the foundation is built; VLK_STATIC where the foundation is
/// linked into its only user.
#if defined(_WIN32)
#if defined(VLK_STATIC)
#define VLK_API
#elif defined(VLK_IMPORT)
#define VLK_API __declspec(dllimport)
#else
#define VLK_API __declspec(dllexport)
#endif
#else
#define VLK_API __attribute__((visibility("default")))
#endif

/// For a function whose object is to stay in registers, which a call would force into memory.
#if __has_cpp_attribute(gnu::always_inline)
#define VLK_FORCE_INLINE [[gnu::always_inline]] inline
#else
#define VLK_FORCE_INLINE inline
#endif

#endif
