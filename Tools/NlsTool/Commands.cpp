#include "Tools/NlsTool/Commands.h"

#include <algorithm>

#include "Tools/NlsTool/Encoding.h"
#include "Tools/NlsTool/Files.h"
#include "Tools/NlsTool/NlsFile.h"
#include "Tools/NlsTool/Problems.h"
#include "Tools/NlsTool/Table.h"

namespace NlsTool {

namespace {

SDefaults LoadDefaults(std::string const & path)
{
    return path.empty() ? FoundationDefaults() : ReadDefaults(path, ReadWhole(path));
}

SLanguage LoadTable(std::string const & path, SDefaults const & defaults)
{
    return ReadTable(path, ReadWhole(path), defaults);
}

std::vector<SLanguage> LoadNlsFile(std::string const & path, SDefaults const & defaults)
{
    return ReadNlsFile(path, ReadWhole(path), defaults);
}

/// Null if there is none.
SLanguage const * Find(std::vector<SLanguage> const & languages, std::uint32_t id)
{
    auto const found =
        std::find_if(languages.begin(), languages.end(), [id](SLanguage const & each) { return each.id == id; });
    return found != languages.end() ? &*found : nullptr;
}

void Compare(SLanguage const & table, SLanguage const & found, CProblems & problems)
{
    auto const expect = [&](std::string const & what, std::string const & is, std::string const & shall) {
        if (is != shall)
            problems.Add(found.place, what + " is '" + is + "' instead of '" + shall + "', " + table.place);
    };
    std::string const letters = LettersOf(table.id);
    expect("the name of " + letters, ToUtf8(found.name), ToUtf8(table.name));
    expect("the encoding of " + letters, std::string(NameOf(found.encoding)), std::string(NameOf(table.encoding)));
    for (std::size_t i = 0; i != std::min(found.texts.size(), table.texts.size()); ++i)
        expect("text " + std::to_string(i) + " of " + letters, ToUtf8(found.texts[i]), ToUtf8(table.texts[i]));
}

} // namespace

void WriteFile(std::string const & file, std::vector<std::string> const & tables, std::string const & defaults)
{
    SDefaults const standard = LoadDefaults(defaults);
    std::vector<SLanguage> languages;
    languages.reserve(tables.size());
    for (std::string const & table : tables)
        languages.push_back(LoadTable(table, standard));
    WriteWhole(file, PrintNlsFile(languages, standard.texts.size()));
}

std::string CheckFile(std::string const & file, std::vector<std::string> const & tables, std::string const & defaults)
{
    SDefaults const standard = LoadDefaults(defaults);
    std::vector<SLanguage> const languages = LoadNlsFile(file, standard);
    CProblems problems;
    for (std::string const & path : tables) {
        SLanguage const table = LoadTable(path, standard);
        if (SLanguage const * const found = Find(languages, table.id); found != nullptr)
            Compare(table, *found, problems);
        else
            problems.Add(table.place, LettersOf(table.id) + " is not in " + file);
    }
    problems.RaiseIfAny();
    std::string line = file + ": good, " + std::to_string(standard.texts.size()) + " texts, languages:";
    for (SLanguage const & language : languages)
        line += " " + LettersOf(language.id);
    return line + "\n";
}

std::string ListFile(std::string const & file, std::string const & letters, std::string const & defaults)
{
    std::vector<SLanguage> const languages = LoadNlsFile(file, LoadDefaults(defaults));
    if (!letters.empty()) {
        SLanguage const * const found = Find(languages, LanguageId(letters));
        if (found == nullptr) throw CBadFile(file + ": there is no language '" + letters + "'");
        return PrintTable(*found);
    }
    std::string out;
    for (SLanguage const & language : languages)
        out += (out.empty() ? "" : "\n") + PrintTable(language);
    return out;
}

std::string Template(std::string const & defaults)
{
    return PrintTemplate(LoadDefaults(defaults));
}

} // namespace NlsTool
