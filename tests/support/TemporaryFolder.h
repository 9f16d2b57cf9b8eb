#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/core/Strings.h"

/// A folder that is removed with all that is in it. Names are relative to it and may have several parts.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string path = (std::filesystem::temp_directory_path() / "production-desk-test-XXXXXX").string();
        if (!mkdtemp(path.data())) throw std::runtime_error("could not make a temporary folder: " + path);
        mPath = path;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        for (std::filesystem::recursive_directory_iterator
                 it(mPath, std::filesystem::directory_options::skip_permission_denied, ignored),
             end;
             !ignored && it != end; it.increment(ignored))
            if (it->is_directory(ignored) && !it->is_symlink(ignored)) chmod(it->path().c_str(), 0700);
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return mPath; }
    std::string Path(std::string_view name) const { return mPath + '/' + std::string(name); }
    host::UTF16String PathUTF16() const { return host::UTF8to16(mPath); }
    host::UTF16String PathUTF16(std::string_view name) const { return host::UTF8to16(Path(name)); }

    /// Makes a folder and its parents; returns its path.
    std::string MakeFolder(std::string_view name) const {
        std::filesystem::create_directories(Path(name));
        return Path(name);
    }
    /// Writes a file in place, making the folders that lead to it; returns its path.
    std::string Write(std::string_view name, std::string_view bytes = {}) const {
        std::filesystem::create_directories(std::filesystem::path(Path(name)).parent_path());
        std::ofstream file(Path(name), std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
        if (!file) throw std::runtime_error("could not write " + Path(name));
        return Path(name);
    }
    /// The content of a file.
    std::string Read(std::string_view name) const {
        std::ifstream file(Path(name), std::ios::binary);
        if (!file) throw std::runtime_error("could not read " + Path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Exists(std::string_view name) const {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(Path(name), ignored));
    }
    void Remove(std::string_view name) const { std::filesystem::remove_all(Path(name)); }
    void Rename(std::string_view from, std::string_view to) const {
        std::filesystem::rename(Path(from), Path(to));
    }

private:
    std::string mPath;
};
