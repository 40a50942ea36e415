#include <algorithm>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <cstdio>

#include "VLK/Exceptions.h"
#include "VLK/Strings.h"
#include "VLK/ThrowState.h"

namespace VLK::Strings {

std::string joinString(std::vector<std::string> const & parts, std::size_t first)
{
    Exceptions::CThrowState state;
    try {
        std::string joined;
        for (std::size_t i = first; i < parts.size(); ++i)
            joined += parts[i];
        return joined;
    }
    VLK_THROW_NEXT_AS(state, {})
}

std::vector<std::string> tokenizeString(std::string const & text, char const * separators)
{
    Exceptions::CThrowState state;
    try {
        std::vector<std::string> tokens;
        boost::algorithm::split(tokens, text, boost::algorithm::is_any_of(separators),
                                boost::algorithm::token_compress_on);
        return tokens;
    }
    VLK_THROW_NEXT_AS(state, {})
}

std::vector<std::string> tokenizeString(char const * text, char const * separators)
{
    Exceptions::CThrowState state;
    try {
        return tokenizeString(std::string(text), separators);
    }
    VLK_THROW_NEXT_AS(state, {})
}

void ByteStreamAppend(char const * data, std::size_t size, std::stringstream & out, std::size_t bytesPerLine)
{
    if (bytesPerLine == 0) bytesPerLine = std::max<std::size_t>(size, 1);
    bool const offsets = size > bytesPerLine;
    for (std::size_t start = 0; start < size; start += bytesPerLine) {
        if (start != 0) out << std::endl;
        char text[64];
        if (offsets) {
            std::snprintf(text, sizeof text, "0x%02zx - 0x%02zx: ", start, start + bytesPerLine);
            out << text;
        }
        std::size_t const end = start + std::min(bytesPerLine, size - start);
        for (std::size_t i = start; i != end; ++i) {
            std::snprintf(text, sizeof text, "%02x", static_cast<unsigned char>(data[i]));
            out << text;
        }
    }
}

} // namespace VLK::Strings
