#include "CaseRules.h"

namespace VLK::Internals {

namespace {
int FoldedDifference(char a, char b) noexcept
{
    return static_cast<unsigned char>(LowerOf(a)) - static_cast<unsigned char>(LowerOf(b));
}

template <char (*Fold)(char) noexcept>
void FoldText(char * text, std::size_t n) noexcept
{
    for (char * const end = text + n; text != end && *text != '\0'; ++text)
        *text = Fold(*text);
}
} // namespace

int CompareBytesFolded(char const * a, char const * b, std::size_t n) noexcept
{
    for (std::size_t i = 0; i != n; ++i)
        if (int const difference = FoldedDifference(a[i], b[i]); difference != 0) return difference;
    return 0;
}

int CompareTextFolded(char const * a, char const * b, std::size_t n) noexcept
{
    for (std::size_t i = 0; i != n; ++i) {
        if (int const difference = FoldedDifference(a[i], b[i]); difference != 0) return difference;
        if (a[i] == '\0') return 0;
    }
    return 0;
}

void LowerText(char * text, std::size_t n) noexcept
{
    FoldText<&LowerOf>(text, n);
}

void UpperText(char * text, std::size_t n) noexcept
{
    FoldText<&UpperOf>(text, n);
}

} // namespace VLK::Internals
