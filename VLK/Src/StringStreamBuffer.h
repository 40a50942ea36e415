#ifndef VLK_SRC_STRING_STREAM_BUFFER_H
#define VLK_SRC_STRING_STREAM_BUFFER_H

#include "VLK/FormatStream.h"
#include "VLK/Strings.h"

namespace VLK::Internals {

class CThreadCB;

/// The sink of CStringVar::Format. Free ones wait on a list of their thread's control block; a thread without a
/// block makes one for each stream. One thread.
class CStringStreamBuffer final : public Output_Streams::Base_Classes::CFormatStreamBuffer {
public:
    /// A stream that appends to the target. Raises "Out of memory"; the stream is dead then, where that returns.
    static Output_Streams::CFormatStream Open(Strings::CStringVar & target, char const * format);

    Output_Streams::CFormatStream Format(char const * format) override;
    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override;
    unsigned int Fill(int c, std::size_t n) override;
    void SignalFormatEnd() override;
    void SignalFormatCopy() override;

    /// Write and Fill of every sink that is a CStringVar.
    static void AppendText(Strings::CStringVar & target, char const * text, std::size_t n, unsigned int upper);
    static void AppendFill(Strings::CStringVar & target, int c, std::size_t n);

private:
    CStringStreamBuffer() noexcept : CFormatStreamBuffer(FlagEndSignal) {}
    static CStringStreamBuffer * Take(CThreadCB * thread) noexcept;
    static void ReleaseList(void * first) noexcept;
    void GiveBack(CThreadCB * thread) noexcept;

    Strings::CStringVar * m_pTarget = nullptr;
    unsigned int m_uNesting = 0; ///< open streams
    CStringStreamBuffer * m_pNext = nullptr;
};

} // namespace VLK::Internals

#endif
