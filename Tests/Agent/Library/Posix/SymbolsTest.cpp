// What KXRA_MIB shows to the dynamic loader.

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

#include "Tests/Agent/Library/LibraryFixture.h"

namespace {

struct SSymbol {
    std::string kind;
    std::string name;
};

std::vector<SSymbol> ExportedSymbols(std::string const & file)
{
    std::string const command = std::string(NM_PROGRAM) + " -D -C --defined-only '" + file + "'";
    std::unique_ptr<FILE, int (*)(FILE *)> const output(::popen(command.c_str(), "r"), &::pclose);
    std::vector<SSymbol> symbols;
    char line[8192];
    while (output && std::fgets(line, sizeof line, output.get()) != nullptr) {
        std::istringstream words(line);
        std::string address;
        SSymbol symbol;
        words >> address >> symbol.kind >> std::ws;
        std::getline(words, symbol.name);
        symbols.push_back(symbol);
    }
    return symbols;
}

TEST_F(LibraryTest, ShowsTheSixFunctionsAndTheFoundationAndNothingElse)
{
    for (char const * const file : {KXRA_LIBRARY, KXRA_FAST_LIBRARY}) {
        std::set<std::string> functions;
        std::vector<std::string> strange;
        std::size_t foundation = 0;
        for (SSymbol const & symbol : ExportedSymbols(file)) {
            EXPECT_NE("u", symbol.kind) << symbol.name << " keeps the library in memory";
            if (symbol.name.find("VLK::") != std::string::npos) {
                ++foundation;
            } else if (symbol.name.find("::") == std::string::npos) {
                functions.insert(symbol.name);
            } else {
                strange.push_back(symbol.name);
            }
        }
        EXPECT_EQ((std::set<std::string>{"DllMain", "SnmpExtensionClose", "SnmpExtensionInit", "SnmpExtensionInitEx",
                                         "SnmpExtensionQuery", "SnmpExtensionTrap"}),
                  functions);
        EXPECT_TRUE(strange.empty()) << strange.front();
        EXPECT_LT(100u, foundation);
    }
}

TEST_F(LibraryTest, ShowsTheClassesOfTheFoundationWithTheirTypeInformation)
{
    std::set<std::string> names;
    for (SSymbol const & symbol : ExportedSymbols(KXRA_LIBRARY))
        names.insert(symbol.name);
    for (char const * const type :
         {"VLK::Sockets::CSocket", "VLK::Sockets::CVlkSocketClient", "VLK::Sockets::CVlkSocketServer",
          "VLK::Threading::CThread", "VLK::Threading::CEvent", "VLK::Strings::CStringVar",
          "VLK::Output_Streams::CFormatStream", "VLK::INI_Files::CIniFile", "VLK::Trace::CTrace",
          "VLK::Misc::CModuleInfo", "VLK::Misc::CVlkApplication", "VLK::Exceptions::CException"}) {
        EXPECT_TRUE(names.contains(std::string("typeinfo for ") + type)) << type;
        // A thread adds no virtual operation of its own; its users bring the table along.
        if (type != std::string("VLK::Threading::CThread")) {
            EXPECT_TRUE(names.contains(std::string("vtable for ") + type)) << type;
        }
    }
}

} // namespace
