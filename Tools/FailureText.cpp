#include "Tools/FailureText.h"

#include <exception>

#include "VLK/Exceptions.h"
#include "VLK/ModuleInfo.h"
#include "VLK/Strings.h"
#include "VLK/ThrowState.h"
#include "VLK/WaitObjects.h"

namespace Coresim {

namespace {

/// The text that the module with the code's id has for the code; empty where no such module is loaded.
std::string TextOf(unsigned int module, unsigned int code)
{
    VLK::Threading::CSyncGuard guard;
    VLK::Misc::CModuleInfo::Lock(guard);
    VLK::Misc::CModuleInfo * const info = VLK::Functions::GetModuleInfo(module);
    VLK::Strings::TString<256> text;
    if (info != nullptr) info->GetErrorMsg(text, code, 0);
    return std::string(text.data(), text.size());
}

/// A record's message ends with a line's end. text: may be null.
std::string OneLine(char const * text)
{
    std::string line = text != nullptr ? text : "";
    while (!line.empty() && line.back() == '\n')
        line.pop_back();
    return line;
}

std::string Describe(VLK::Exceptions::CErrorLog const & record)
{
    VLK::Exceptions::NATIVE_ERROR native{};
    unsigned int const code = record.GetError(native);
    std::string text = TextOf(code, code);
    if (native.kind != 0) text += ": " + TextOf(native.kind, native.value);
    if (std::string const message = OneLine(record.GetErrorMsg(0)); !message.empty()) text += " (" + message + ")";
    return OneLine(text.c_str());
}

} // namespace

std::string TakeFailureText()
{
    try {
        throw;
    } catch (std::exception const & error) {
        return error.what();
    } catch (...) {
        VLK::Exceptions::CErrorLog record;
        {
            VLK::Exceptions::CThrowState state;
            VLK_CONTINUE(state, log);
            log >> record;
        }
        return Describe(record);
    }
}

} // namespace Coresim
