#include "desk/framework/PluginInspection.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "desk/framework/PluginLoader.h"
#include "host/core/Strings.h"

namespace desk {
namespace {

constexpr std::size_t kMaxProgramHeaders = 1024;
constexpr std::size_t kMaxNoteBytes = 64 * 1024;
constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
constexpr unsigned char kByteOrder = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;

struct NotALibrary : std::runtime_error {
    explicit NotALibrary(const std::string& detail) : std::runtime_error("is no library (" + detail + ")") {}
};

void ReadExactly(int file, void* bytes, std::size_t size, std::uint64_t offset) {
    auto* target = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t count = pread(file, target, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw NotALibrary("it is cut off");
        target += count;
        size -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
}

std::uint64_t SizeOf(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0)
        throw std::runtime_error(std::string("could not be read: ") + std::strerror(errno));
    return static_cast<std::uint64_t>(status.st_size);
}

Elf64_Ehdr ReadHeader(int file) {
    unsigned char identification[EI_NIDENT] = {};
    if (pread(file, identification, sizeof identification, 0) < SELFMAG ||
        std::memcmp(identification, ELFMAG, SELFMAG) != 0)
        throw NotALibrary("it is no ELF file");
    if (identification[EI_CLASS] != kClass || identification[EI_DATA] != kByteOrder)
        throw NotALibrary("it is for another kind of machine");
    Elf64_Ehdr header;
    ReadExactly(file, &header, sizeof header, 0);
    if (header.e_type != ET_DYN) throw NotALibrary("it is an ELF file of another type");
    if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum > kMaxProgramHeaders)
        throw NotALibrary("its program headers are damaged");
    return header;
}

/// The system maps segments without looking: what lies behind the end of the file ends the program when it is
/// touched (mmap(2), SIGBUS).
void ThrowIfCutOff(const Elf64_Ehdr& header, const std::vector<Elf64_Phdr>& segments, std::uint64_t fileSize) {
    const auto isInside = [fileSize](std::uint64_t offset, std::uint64_t size) {
        return offset <= fileSize && size <= fileSize - offset;
    };
    const bool isWhole = isInside(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize) &&
                         std::ranges::all_of(segments, [&](const Elf64_Phdr& segment) {
                             return segment.p_type == PT_NULL || isInside(segment.p_offset, segment.p_filesz);
                         });
    if (!isWhole) throw NotALibrary("it is cut off");
}

bool IsPluginNote(const Elf64_Nhdr& note, const char* owner) {
    return note.n_type == host::kPluginNoteType && note.n_namesz == sizeof host::kPluginNoteOwner &&
           std::memcmp(owner, host::kPluginNoteOwner, sizeof host::kPluginNoteOwner) == 0 &&
           note.n_descsz >= sizeof(std::uint32_t);
}

/// Walks the notes of a segment, which stand at multiples of `alignment`.
std::optional<host::PluginNote> FindPluginNote(const std::vector<char>& notes, std::uint64_t alignment) {
    const auto align = [alignment](std::uint64_t size) {
        return (size + alignment - 1) / alignment * alignment;
    };
    std::uint64_t position = 0;
    while (position + sizeof(Elf64_Nhdr) <= notes.size()) {
        Elf64_Nhdr note;
        std::memcpy(&note, &notes[position], sizeof note);
        const std::uint64_t owner = position + sizeof note;
        const std::uint64_t description = position + align(sizeof note + std::uint64_t{note.n_namesz});
        const std::uint64_t end = description + note.n_descsz;
        if (end > notes.size()) return {};
        if (IsPluginNote(note, notes.data() + owner)) {
            host::PluginNote result{};
            constexpr std::size_t kSize = sizeof(host::PluginNote) - offsetof(host::PluginNote, mSdkVersion);
            std::memcpy(&result.mSdkVersion, &notes[description], std::min<std::size_t>(note.n_descsz, kSize));
            return result;
        }
        position = position + align(end - position);
    }
    return {};
}

class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        : mFile(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
        if (mFile < 0) throw std::runtime_error(std::string("could not be read: ") + std::strerror(errno));
        struct stat status {};
        if (fstat(mFile, &status) == 0 && S_ISREG(status.st_mode)) return;
        close(mFile);
        throw NotALibrary("it is no regular file");
    }
    ~OpenFile() { close(mFile); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int Get() const { return mFile; }

private:
    int mFile;
};

}  // namespace

std::optional<host::PluginNote> ReadPluginNote(int file) {
    const Elf64_Ehdr header = ReadHeader(file);
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    ReadExactly(file, segments.data(), segments.size() * sizeof(Elf64_Phdr), header.e_phoff);
    ThrowIfCutOff(header, segments, SizeOf(file));
    for (const Elf64_Phdr& segment : segments) {
        if (segment.p_type != PT_NOTE || segment.p_filesz > kMaxNoteBytes) continue;
        std::vector<char> notes(segment.p_filesz);
        ReadExactly(file, notes.data(), notes.size(), segment.p_offset);
        if (const auto note = FindPluginNote(notes, segment.p_align == 8 ? 8 : 4)) return note;
    }
    return {};
}

PluginFile InspectPlugin(const std::string& path) {
    PluginFile plugin;
    plugin.mPath = path;
    try {
        const OpenFile file(path);
        const auto note = ReadPluginNote(file.Get());
        if (!note) {
            plugin.mRefusal = "has no entry record";
            return plugin;
        }
        plugin.mSdkVersion = note->mSdkVersion;
        plugin.mName.assign(note->mName, strnlen(note->mName, sizeof note->mName));
        if (note->mSdkVersion != host::kSdkVersion)
            plugin.mRefusal = "was made for SDK version " + std::to_string(note->mSdkVersion) +
                              "; this program's is " + std::to_string(host::kSdkVersion);
    } catch (const std::exception& error) {
        plugin.mRefusal = error.what();
    }
    return plugin;
}

}  // namespace desk
