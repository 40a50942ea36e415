#ifndef TESTS_HOST_BINDING_WORDS_H
#define TESTS_HOST_BINDING_WORDS_H

#include <string>

#include "Platform/SnmpExtension.h"

// OIDs and values of a variable binding as words without blanks, and back. "-" stands for what is empty. Memory of what
// is read comes from SnmpUtil and is the caller's. Words that make no sense raise std::invalid_argument.

/// The arcs with dots between them.
std::string OidWord(AsnObjectIdentifier const & oid);
AsnObjectIdentifier ParseOidWord(std::string const & word);

/// Numbers in decimal, OIDs with dots, octets in hexadecimal.
std::string ValueWord(AsnAny const & value);
AsnAny ParseValueWord(unsigned char type, std::string const & word);

#endif
