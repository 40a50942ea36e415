#ifndef TESTS_HOST_COMMANDS_H
#define TESTS_HOST_COMMANDS_H

#include <memory>
#include <sstream>
#include <string>

#include "HostedLibrary.h"

/// What the host is told, line by line. The answer is some lines of bindings, "binding OID TYPE VALUE", and then one
/// that begins with "ok", or one line "error" with the reason. TYPE is hexadecimal; see BindingWords.h for the others.
///
///   load FILE               loads and attaches the library; the file is the rest of the line
///   init [UPTIME]           SnmpExtensionInit: "ok 1 REGION" or "ok 0"
///   more                    SnmpExtensionInitEx: "ok 1 REGION", or "ok 0 -" behind the last one
///   get OID...              SnmpExtensionQuery: the bindings, and "ok RESULT STATUS INDEX"
///   next OID...             the same
///   set [OID TYPE VALUE]... the same
///   wait MS                 "ok 1" when the trap event fires in time, whose signal is taken then; else "ok 0"
///   trap                    SnmpExtensionTrap: the bindings and "ok 1 ENTERPRISE GENERIC SPECIFIC TIME", or "ok 0"
///   close                   SnmpExtensionClose
///   unload                  detaches and unloads the library
///   loaded NAME             "ok 1" while a module of this file name is in the process, else "ok 0"
///   handles                 "ok COUNT": how many handles of the system the process has
class CCommands {
public:
    CCommands() = default;
    /// Closes a library that is started still.
    ~CCommands();
    CCommands(CCommands const &) = delete;
    CCommands & operator=(CCommands const &) = delete;

    /// Does what the line says; the answer, each line of it with its end.
    std::string Do(std::string const & line);

private:
    using Words = std::istringstream;

    void Load(Words & words);
    void Init(Words & words);
    void More(Words & words);
    void Get(Words & words);
    void Next(Words & words);
    void Set(Words & words);
    void Wait(Words & words);
    void Trap(Words & words);
    void Close(Words & words);
    void Unload(Words & words);
    void Loaded(Words & words);
    void Handles(Words & words);

    CHostedLibrary & Library();
    void Ask(unsigned char pdu, Words & words);
    void Query(unsigned char pdu, class CBindings & bindings);
    void Show(RFC1157VarBindList const & bindings);

    std::unique_ptr<CHostedLibrary> m_library;
    std::ostringstream m_answer;
};

#endif
