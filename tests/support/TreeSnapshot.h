#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>

/// All that stands at and below a path, by its path below it: kind, permissions and time of modification, with
/// a file's content or a link's target. For comparing. Empty when nothing stands there.
using TreeSnapshot = std::map<std::string, std::string>;

inline std::string DescribeItem(const std::filesystem::path& path) {
    struct stat facts;
    if (lstat(path.c_str(), &facts) != 0) return "gone";
    std::string text = std::to_string(facts.st_mtim.tv_sec) + '.' + std::to_string(facts.st_mtim.tv_nsec);
    if (S_ISLNK(facts.st_mode)) return "link " + text + ' ' + std::filesystem::read_symlink(path).string();
    text += ' ' + std::to_string(facts.st_mode & 07777);
    if (S_ISDIR(facts.st_mode)) return "folder " + text;
    if (!S_ISREG(facts.st_mode)) return "other";
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    return "file " + text + ' ' +
           (content.size() <= 20 ? content : std::to_string(std::hash<std::string>{}(content)));
}

inline TreeSnapshot TakeSnapshot(const std::string& root) {
    namespace fs = std::filesystem;
    TreeSnapshot snapshot;
    if (!fs::exists(fs::symlink_status(root))) return snapshot;
    snapshot[""] = DescribeItem(root);
    if (!fs::is_directory(fs::symlink_status(root))) return snapshot;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        snapshot[entry.path().string().substr(root.size())] = DescribeItem(entry.path());
    return snapshot;
}
