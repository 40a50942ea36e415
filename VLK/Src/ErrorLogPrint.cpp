#include <cstdint>

#include "VLK/ErrorLog.h"
#include "VLK/FormatStream.h"
#include "VLK/ModuleInfo.h"
#include "VLK/ResultCodes.h"
#include "VLK/SourceInfo.h"
#include "VLK/Strings.h"
#include "VLK/WaitObjects.h"

/// The printed form of an error record.
namespace VLK::Output_Streams {

namespace {

using CBuffer = Base_Classes::CFormatStreamBuffer;

/// Indents what is printed meanwhile.
class CLeftMarginScope {
public:
    CLeftMarginScope(CBuffer & buffer, std::size_t margin) noexcept
        : m_Buffer(buffer), m_uFormer(buffer.SetLeftMargin(margin))
    {
    }
    ~CLeftMarginScope() { m_Buffer.SetLeftMargin(m_uFormer); }
    CLeftMarginScope(CLeftMarginScope const &) = delete;
    CLeftMarginScope & operator=(CLeftMarginScope const &) = delete;

private:
    CBuffer & m_Buffer;
    std::size_t m_uFormer;
};

/// Prints one record under the lock of the module list.
class CRecordPrinter {
public:
    /// direct: how the modules' texts are given, as CModuleInfo::GetErrorMsg takes it.
    CRecordPrinter(CBuffer & buffer, Exceptions::CErrorLog const & log, unsigned int direct) noexcept
        : m_Buffer(buffer), m_Log(log), m_uDirect(direct)
    {
    }

    void PrintHead() const
    {
        PrintError();
        char const * const text = m_Log.GetErrorMsg(0);
        if (text != nullptr && *text != '\0') m_Buffer.Format("          --> %!s") << text;
        if (Exceptions::SOURCE_INFO const * const source = m_Log.GetSrcInfo(0))
            m_Buffer.Format("\nModule  : %s::%s@%d\n")
                << source->module->GetModuleName() << source->file << source->line;
        PrintNative();
    }

    void PrintStack() const
    {
        if (m_Log.GetLogCount() <= 1) return;
        m_Buffer.Format("\nErrLog-Stack:\n\n");
        for (unsigned int i = 1; i < m_Log.GetLogCount(); ++i)
            PrintStage(i);
    }

private:
    void PrintError() const
    {
        const std::uint32_t code = m_Log.GetError();
        Misc::CModuleInfo * const module = Functions::GetModuleInfo(code);
        if (module == nullptr) {
            m_Buffer.Format("Error   : %d::%d (0x%X)\n") << ErrorModuleId(code) << ErrorNumber(code) << code;
            return;
        }
        Strings::TString<256> message;
        module->GetErrorMsg(message, code, m_uDirect);
        m_Buffer.Format("Error   : %s::%d (0x%X)\nMessage : %s\n")
            << module->GetModuleName() << ErrorNumber(code) << code << message;
    }

    void PrintNative() const
    {
        Exceptions::NATIVE_ERROR native;
        m_Log.GetError(native);
        if (native.kind == Exceptions::NativeNone) return;
        Misc::CModuleInfo * const module = Functions::GetModuleInfo(native.kind);
        if (module == nullptr) {
            m_Buffer.Format("\nError   : %d::%d (0x%X)\n") << native.kind << native.value << native.value;
            return;
        }
        Strings::TString<256> message;
        module->GetErrorMsg(message, native.value, m_uDirect);
        m_Buffer.Format("\nN-Error : %s::%d (0x%X)\nMessage : %s\n")
            << module->GetModuleName() << native.value << native.value << message;
    }

    void PrintStage(unsigned int index) const
    {
        if (Exceptions::SOURCE_INFO const * const source = m_Log.GetSrcInfo(index))
            m_Buffer.Format(" %s::%s@%d\n") << source->module->GetModuleName() << source->file << source->line;
        else
            m_Buffer.Format(" Source information lost!");
        char const * const text = m_Log.GetErrorMsg(index);
        if (text != nullptr && *text != '\0') m_Buffer.Format("  %!s\n") << text;
    }

    CBuffer & m_Buffer;
    Exceptions::CErrorLog const & m_Log;
    unsigned int m_uDirect;
};

} // namespace

CFormatStream & CFormatStream::operator<<(Exceptions::CErrorLog const & log)
{
    return Guarded([&] {
        const unsigned int parse = GetFormatParameters(0, /*isInteger=*/0);
        if (parse == PlaceholderReady && m_uType == TypePointer) {
            FormatPointer(&log);
            return;
        }
        if (parse == PlaceholderReady && m_uType != TypeString) {
            VLK_SOURCE(source);
            doThrow(source);
        }
        Threading::CSyncGuard lock;
        Misc::CModuleInfo::Lock(lock);
        const CLeftMarginScope margin(*m_pBuffer, m_pBuffer->GetColumn() + m_uMargin);
        const CRecordPrinter printer(*m_pBuffer, log, m_uParameterCount != 0 ? m_uParameter[0] : 0);
        printer.PrintHead();
        if (parse == NoPlaceholder || m_uUpper != 0) printer.PrintStack();
    });
}

} // namespace VLK::Output_Streams
