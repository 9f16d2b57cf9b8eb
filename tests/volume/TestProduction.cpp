#include "tests/volume/TestProduction.h"

#include <unistd.h>

#include <sstream>

#include "desk/core/names/HostNames.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/production/TrashRecords.h"

namespace testproduction {

namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".zuproj";

bool IsHidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// In an empty folder and for what vanishes meanwhile: nothing.
std::vector<fs::directory_entry> Entries(const fs::path& folder) {
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        entries.push_back(*it);
    return entries;
}

void Examine(const fs::path& folder, Findings& findings) {
    for (const fs::directory_entry& entry : Entries(folder)) {
        const bool isFolder = entry.is_directory() && !entry.is_symlink();
        if (IsHidden(entry.path()) && entry.path().filename() != desk::kTrashRecordsName) {
            findings.mHidden.push_back(entry.path().string());
        } else if (isFolder) {
            Examine(entry.path(), findings);
        } else if (entry.path().extension() == ".json") {
            continue;
        } else if (const auto identity = Identify(Read(entry.path()))) {
            findings.mProjects[identity->mNumber].push_back(entry.path().string());
            findings.mVersions[identity->mNumber] = identity->mVersion;
        } else {
            findings.mBroken.push_back(entry.path().string());
        }
    }
}

}  // namespace

std::string MakeContent(int number, int version) {
    const int lines = 20 + (number * 37 + version * 13) % 400;
    const std::string mark = std::to_string(number) + ' ' + std::to_string(version) + ' ';
    std::string text = "project " + std::to_string(number) + " version " + std::to_string(version) + '\n';
    for (int line = 0; line < lines; ++line)
        text +=
            mark + std::to_string(line) + " of the lines that make a project longer than a page of memory\n";
    return text;
}

std::optional<Identity> Identify(const std::string& bytes) {
    std::istringstream text(bytes);
    std::string word;
    Identity identity;
    if (!(text >> word >> identity.mNumber >> word >> identity.mVersion) || identity.mNumber < 0) return {};
    if (bytes != MakeContent(identity.mNumber, identity.mVersion)) return {};
    return identity;
}

TemporaryFolder MakeFolderInMemory() {
    if (::access("/dev/shm", W_OK) == 0) ::setenv("TMPDIR", "/dev/shm", 1);
    return {};
}

void Make(const std::string& folder, int projects) {
    const char* const folders[] = {"", "Cuts/", "Reels/", "Reels/North/", "Reels/South/", "Sound/Stems/"};
    for (int number = 0; number < projects; ++number) {
        const std::string parent =
            folder + '/' + folders[static_cast<std::size_t>(number) % std::size(folders)];
        fs::create_directories(parent);
        std::ofstream file(parent + "Scene " + std::to_string(number) + kExtension, std::ios::binary);
        file << MakeContent(number, 0);
    }
}

std::string Findings::DescribeLosses(int projects, bool mayBeCopied) const {
    std::ostringstream text;
    for (const std::string& path : mBroken) text << "not whole: " << path << '\n';
    for (int number = 0; number < projects; ++number) {
        const auto found = mProjects.find(number);
        if (found == mProjects.end()) {
            text << "missing: project " << number << '\n';
        } else if (found->second.size() > 1 && !mayBeCopied) {
            text << "in several places:";
            for (const std::string& path : found->second) text << ' ' << path;
            text << '\n';
        }
    }
    return text.str();
}

Findings Examine(const std::string& folder) {
    Findings findings;
    Examine(folder, findings);
    return findings;
}

Items List(const std::string& folder) {
    Items items;
    items.mFolders.push_back(folder);
    for (std::size_t i = 0; i < items.mFolders.size(); ++i)
        for (const fs::directory_entry& entry : Entries(fs::path(items.mFolders[i]))) {
            std::error_code error;
            if (IsHidden(entry.path())) continue;
            if (entry.is_directory(error))
                items.mFolders.push_back(entry.path().string());
            else if (entry.path().extension() == kExtension)
                items.mProjects.push_back(entry.path().string());
        }
    return items;
}

void Sweep(const std::string& production, const desk::Desktop& desktop) {
    desk::PosixFileSystem disk;
    std::vector<std::string> folders = List(production).mFolders;
    folders.push_back(desk::GetTrashRecordsFolder(production + "/Trash"));
    for (const std::string& path : folders)
        for (const desk::HollowLock& lock : desk::SweepLeftovers(disk, desktop, path))
            desk::SweepHollowLock(disk, desktop, lock);
}

}  // namespace testproduction
