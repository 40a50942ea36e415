#include "ErrLogData.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "VLK/ModuleInfo.h"

namespace VLK::Exceptions {

namespace {

constexpr std::size_t BlockStep = 1024;
constexpr std::size_t HeadSize = sizeof(ERRLOG_DATA);
constexpr std::size_t FirstTextCapacity = BlockStep - HeadSize - ERRLOG_DATA::EntryStep * sizeof(SErrLogEntry);
static_assert(sizeof(void *) != 8 || FirstTextCapacity == 808);
static_assert(HeadSize % alignof(SErrLogEntry) == 0 && FirstTextCapacity % alignof(SErrLogEntry) == 0);

std::size_t BlockSize(std::size_t textCapacity, std::uint32_t entryCapacity) noexcept
{
    return HeadSize + textCapacity + entryCapacity * sizeof(SErrLogEntry);
}

SErrLogEntry * TableBehind(ERRLOG_DATA * data, std::size_t textCapacity) noexcept
{
    return reinterpret_cast<SErrLogEntry *>(data->Text() + textCapacity);
}

} // namespace

ERRLOG_DATA * ERRLOG_DATA::New(unsigned int line) noexcept
{
    ERRLOG_DATA * const data = static_cast<ERRLOG_DATA *>(std::calloc(1, BlockStep));
    if (data == nullptr) return nullptr;
    data->entryCapacity = EntryStep;
    data->textCapacity = FirstTextCapacity;
    data->entries = TableBehind(data, FirstTextCapacity);
    data->entries[0].source = &data->firstSource;
    data->unloadCounter = Misc::CModuleInfo::GetUnloadCounter();
    data->firstSource.line = line;
    return data;
}

void ERRLOG_DATA::Free(ERRLOG_DATA * data) noexcept
{
    std::free(data);
}

void ERRLOG_DATA::FreeChain(ERRLOG_DATA * newest) noexcept
{
    while (newest != nullptr) {
        ERRLOG_DATA * const older = newest->next;
        Free(newest);
        newest = older;
    }
}

bool ERRLOG_DATA::Grow(ERRLOG_DATA *& data, std::size_t extraText, std::uint32_t extraEntries) noexcept
{
    const std::size_t oldText = data->textCapacity;
    const std::uint32_t entryCapacity = data->entryCapacity + extraEntries;
    const std::size_t oldSize = BlockSize(oldText, data->entryCapacity);
    const std::size_t needed = BlockSize(oldText + extraText, entryCapacity);
    if (needed < extraText) return false; // overflow
    const std::size_t size = std::max(2 * oldSize, (needed + BlockStep - 1) / BlockStep * BlockStep);

    ERRLOG_DATA * const moved = static_cast<ERRLOG_DATA *>(std::realloc(data, size));
    if (moved == nullptr) return false;
    const std::size_t textCapacity = size - HeadSize - entryCapacity * sizeof(SErrLogEntry);
    SErrLogEntry * const table = TableBehind(moved, textCapacity);
    std::memmove(table, TableBehind(moved, oldText), moved->entryCapacity * sizeof(SErrLogEntry));
    table[0].source = &moved->firstSource;
    moved->entries = table;
    moved->entryCapacity = entryCapacity;
    moved->textCapacity = textCapacity;
    data = moved;
    return true;
}

void ERRLOG_DATA::CountOrigin() noexcept
{
    entryCount = std::max<std::uint32_t>(entryCount, 1);
}

bool ERRLOG_DATA::SourcesAreValid() const noexcept
{
    return unloadCounter == Misc::CModuleInfo::GetUnloadCounter();
}

char const * ERRLOG_DATA::TextOf(unsigned int index) const noexcept
{
    const std::uint64_t offset = entries[index].textOffset;
    if (offset == 0 || offset > textLength) return "";
    return Text() + offset;
}

} // namespace VLK::Exceptions
