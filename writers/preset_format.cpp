// Writer format names of encoder preset files.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "platform/cfile.h"
#include "platform/fs.h"
#include "platform/text.h"
#include "tovfoundation/writers.h"

namespace Halyard {

namespace {

constexpr std::size_t kChunkUnits = 1024;                // one unit more than is read
constexpr std::size_t kReadUnits = kChunkUnits - 1;      // so every chunk ends in a zero
constexpr std::size_t kWorkUnits = kMaxFormatNameUnits;  // the name with its terminator

constexpr char16_t kHeaderTag[] = u"<Header";
constexpr char16_t kNameAttribute[] = u"WriterFormatName=";
constexpr char16_t kWriterMPEG[] = u"MPEG";
constexpr char16_t kWriterMPEG2DVD[] = u"MPEG2-DVD";
constexpr char16_t kWriterWRX[] = u"WRX | W4X";
constexpr char16_t kWriterWRXH264[] = u"WRX | W4X (H.264)";  // older spelling of WRX | W4X
constexpr char16_t kWriterPellucid[] = u"Pellucid Video";    // older spelling of WRX | W4X

UTF16String Text(const char16_t* literal) { return basalt::ToUTF16(std::u16string_view(literal)); }

// Code-unit-for-code-unit equality of two NUL-terminated texts.
bool IsEqual(UTF16StringView a, UTF16StringView b) { return a == b; }

// Reads the next chunk: at most kReadUnits little-endian units, zero
// terminated. Answers the number of units read, or nothing on a read error.
bool ReadChunk(std::FILE* file, std::array<unsigned short, kChunkUnits>& chunk,
               std::size_t& units) {
  std::array<unsigned char, kReadUnits * 2> bytes{};
  const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), file);
  if (std::ferror(file) != 0) return false;
  chunk.fill(0);
  units = got / 2;  // an odd trailing byte is not a unit
  for (std::size_t i = 0; i < units; ++i) {
    chunk[i] = static_cast<unsigned short>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  return true;
}

std::uint32_t IsPresetStreamForWriter(std::FILE* file, const unsigned short* writerName,
                                      unsigned char* isForWriter) {
  std::array<unsigned short, kWorkUnits + 1> name{};
  const std::uint32_t status = VGetFormatName(file, name.data(), kMaxFormatNameUnits);
  if (status != 0) return status;

  const UTF16StringView formatName(name.data());
  const UTF16StringView writer(writerName);
  UTF16String effective(formatName);
  if (formatName.find(Text(kWriterPellucid)) != UTF16StringView::npos ||
      formatName.find(Text(kWriterWRXH264)) != UTF16StringView::npos) {
    effective = Text(kWriterWRX);
  }
  if (IsEqual(effective, writer)) {
    *isForWriter = 1;
  } else if (IsEqual(formatName, Text(kWriterMPEG)) && IsEqual(writer, Text(kWriterMPEG2DVD))) {
    *isForWriter = 1;
  } else {
    *isForWriter = 0;
  }
  return 0;
}

}  // namespace

std::uint32_t VGetFormatName(std::FILE* file, unsigned short* name, std::uint32_t capacity) {
  if (file == nullptr || name == nullptr || capacity == 0) return TOV::kErrInvalidPointer;
  if (std::feof(file) != 0) return TOV::kErrNotFound;

  const UTF16String header = Text(kHeaderTag);
  const UTF16String attribute = Text(kNameAttribute);
  std::array<unsigned short, kChunkUnits> chunk{};
  bool headerSeen = false;
  for (;;) {
    std::size_t units = 0;
    if (!ReadChunk(file, chunk, units)) return TOV::kErrCreateFailed;
    // The chunk is searched as zero-terminated text.
    const UTF16StringView text(chunk.data());

    std::size_t from = 0;
    if (!headerSeen) {
      const std::size_t at = text.find(header);
      if (at != UTF16StringView::npos) {
        headerSeen = true;
        from = at;
      }
    }
    if (headerSeen) {
      const std::size_t at = text.find(attribute, from);
      if (at != UTF16StringView::npos) {
        const std::size_t quote = text.find(u'"', at + attribute.size());
        if (quote != UTF16StringView::npos && quote + 1 < text.size()) {
          const std::size_t start = quote + 1;
          std::size_t end = text.find(u'"', start);
          if (end == UTF16StringView::npos) end = text.size();
          const std::size_t length = end - start;
          // The name and its terminator must fit the work buffer.
          if (length >= kWorkUnits) return TOV::kErrNotFound;
          std::array<unsigned short, kWorkUnits> work{};
          std::memcpy(work.data(), text.data() + start, length * sizeof(unsigned short));
          if (capacity < length) return TOV::kErrNotFound;
          // length == capacity is accepted: the terminator lands at name[capacity].
          std::memcpy(name, work.data(), (length + 1) * sizeof(unsigned short));
          return 0;
        }
      }
    }
    if (units < kReadUnits || std::feof(file) != 0) return TOV::kErrNotFound;
  }
}

std::uint32_t VGetFormatName(const char* path, unsigned short* name, std::uint32_t capacity) {
  if (path == nullptr || name == nullptr || capacity == 0) return TOV::kErrInvalidPointer;
  const tovimpl::platform::Result<std::FILE*> file = tovimpl::platform::OpenCFileA(path, "rb");
  if (!file) return TOV::kErrOpenFailed;
  const std::uint32_t status = VGetFormatName(*file, name, capacity);
  std::fclose(*file);
  return status;
}

std::uint32_t VGetFormatName(const unsigned short* path, unsigned short* name,
                             std::uint32_t capacity) {
  if (path == nullptr || name == nullptr || capacity == 0) return TOV::kErrInvalidPointer;
  const tovimpl::platform::Result<std::FILE*> file = tovimpl::platform::OpenCFile(path, "rb");
  if (!file) return TOV::kErrOpenFailed;
  const std::uint32_t status = VGetFormatName(*file, name, capacity);
  std::fclose(*file);
  return status;
}

std::uint32_t VIsPresetFileForThisWriter(const char* path, const unsigned short* writerName,
                                         unsigned char* isForWriter) {
  if (path == nullptr || writerName == nullptr || isForWriter == nullptr) {
    return TOV::kErrInvalidPointer;
  }
  const tovimpl::platform::Result<std::FILE*> file = tovimpl::platform::OpenCFileA(path, "rb");
  if (!file) return TOV::kErrOpenFailed;
  const std::uint32_t status = IsPresetStreamForWriter(*file, writerName, isForWriter);
  std::fclose(*file);
  return status;
}

std::uint32_t VIsPresetForThisWriter(const unsigned short* preset, std::uint32_t units,
                                     const unsigned short* writerName, unsigned char* isForWriter) {
  namespace platform = tovimpl::platform;
  if (writerName == nullptr || isForWriter == nullptr || (preset == nullptr && units != 0)) {
    return TOV::kErrInvalidPointer;
  }

  // The system's temporary folder, made when it is missing.
  // The folder goes through narrow text, as the narrow system calls take it.
  const UTF16String folder =
      platform::NarrowToUTF16(platform::UTF16ToNarrow(platform::TempDirectory().ValueOr({})));
  if (folder.empty()) return TOV::kErrCreateFailed;
  if (!platform::ReadAttributes(folder) && !platform::CreateDirectories(folder)) {
    return TOV::kErrCreateFailed;
  }

  // A new empty file "vpr….tmp"; when the name cannot be made, the folder is
  // made once more (it may have vanished meanwhile) and the name tried again.
  const UTF16String prefix = Text(u"vpr");
  platform::Result<UTF16String> made = platform::CreateTempFile(folder, prefix);
  if (!made) {
    if (!platform::CreateDirectories(folder)) return TOV::kErrCreateFailed;
    made = platform::CreateTempFile(folder, prefix);
    if (!made) return TOV::kErrCreateFailed;
  }
  const UTF16String path = std::move(*made);

  // The preset's units, little-endian.
  const platform::Result<std::FILE*> created = platform::OpenCFile(path.c_str(), "wb");
  if (!created) return TOV::kErrCreateFailed;
  std::FILE* file = *created;
  std::size_t written = 0;
  std::array<unsigned char, 4096> bytes{};
  for (std::uint32_t done = 0; done < units;) {
    const std::uint32_t count = std::min<std::uint32_t>(units - done, bytes.size() / 2);
    for (std::uint32_t i = 0; i < count; ++i) {
      bytes[2 * i] = static_cast<unsigned char>(preset[done + i] & 0xFF);
      bytes[2 * i + 1] = static_cast<unsigned char>(preset[done + i] >> 8);
    }
    const std::size_t put = std::fwrite(bytes.data(), 2, count, file);
    written += put;
    done += count;
    if (put != count) break;
  }
  const bool flushed = std::fflush(file) == 0;
  std::fclose(file);
  if (written < units || !flushed) return TOV::kErrCreateFailed;  // the file is left behind

  std::uint32_t status = TOV::kErrOpenFailed;
  if (const platform::Result<std::FILE*> in = platform::OpenCFile(path.c_str(), "rb")) {
    status = IsPresetStreamForWriter(*in, writerName, isForWriter);
    std::fclose(*in);
  }
  // The decision stands whether or not the file could be deleted.
  (void)platform::RemoveCFile(path.c_str());
  return status;
}

}  // namespace Halyard
