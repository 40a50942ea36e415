#include "Tools/NlsTool/Placeholders.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "Tools/NlsTool/Encoding.h"

namespace NlsTool {

namespace {

constexpr std::size_t MostParameters = 5;

/// What a format takes, each value a word: "*" a width or parameter, "s" a text, ".h" a dump with one parameter.
class CFormat {
public:
    explicit CFormat(std::u32string_view text) : m_rest(text)
    {
        while (m_fault.empty() && SkipToPlaceholder())
            ReadPlaceholder();
    }

    /// Why the text is no format; empty if it is one.
    std::string const & Fault() const noexcept { return m_fault; }
    /// The values' words, separated by blanks.
    std::string const & Values() const noexcept { return m_values; }

private:
    bool SkipToPlaceholder()
    {
        for (;;) {
            std::size_t const percent = m_rest.find(U'%');
            if (percent == m_rest.npos) return false;
            m_rest.remove_prefix(percent);
            if (!m_rest.starts_with(U"%%")) return true;
            // A stream fails at a format that ends so.
            if (m_rest.size() == 2) m_fault = "a text with placeholders can't end with %%";
            m_rest.remove_prefix(2);
        }
    }

    void ReadPlaceholder()
    {
        std::u32string_view const whole = m_rest;
        m_rest.remove_prefix(1);
        Take(U"!");
        if (!Take(U"0") && Take(U"-=+") && !m_rest.empty()) m_rest.remove_prefix(1);
        TakeNumber();
        std::string word;
        while (Take(U".")) {
            if (!TakeNumber() || word.size() == MostParameters) return SetFault(whole);
            word += '.';
        }
        if (!Take(U"cCdDxXobsSpPhH")) return SetFault(whole);
        AddValue(word + static_cast<char>(whole[whole.size() - m_rest.size() - 1]));
    }

    bool Take(std::u32string_view any)
    {
        if (m_rest.empty() || any.find(m_rest.front()) == any.npos) return false;
        m_rest.remove_prefix(1);
        return true;
    }
    bool TakeNumber()
    {
        if (Take(U"*")) {
            AddValue("*");
            return true;
        }
        bool found = false;
        while (Take(U"0123456789"))
            found = true;
        return found;
    }
    void AddValue(std::string const & word) { m_values += (m_values.empty() ? "" : " ") + word; }
    void SetFault(std::u32string_view whole)
    {
        std::size_t const end = whole.size() - m_rest.size();
        m_fault = "'" + ToUtf8(whole.substr(0, m_rest.empty() ? end : end + 1)) +
                  "' is no placeholder; a percent sign is written %%";
    }

    std::u32string_view m_rest;
    std::string m_values;
    std::string m_fault;
};

/// The fields that a resort mask names, as "%1 %3".
std::string FieldsOf(std::u32string_view mask)
{
    std::set<char32_t> fields;
    for (std::size_t i = 0; i + 1 < mask.size(); ++i) {
        if (mask[i] != U'%') continue;
        char32_t const next = mask[++i];
        if (next >= U'0' && next <= U'9') fields.insert(next);
    }
    std::string out;
    for (char32_t const field : fields)
        out += (out.empty() ? "%" : " %") + std::string(1, static_cast<char>(field));
    return out;
}

std::string Difference(std::string const & standard, std::string const & translation)
{
    if (standard == translation) return {};
    auto const named = [](std::string const & values) { return values.empty() ? "none" : "'" + values + "'"; };
    return "the placeholders differ from the default text's: " + named(translation) + " instead of " + named(standard);
}

} // namespace

std::string FaultOfPlaceholders(std::u32string_view standard, std::u32string_view translation)
{
    CFormat const expected(standard);
    if (!expected.Fault().empty()) return Difference(FieldsOf(standard), FieldsOf(translation));
    CFormat const found(translation);
    if (!found.Fault().empty()) return found.Fault();
    return Difference(expected.Values(), found.Values());
}

} // namespace NlsTool
