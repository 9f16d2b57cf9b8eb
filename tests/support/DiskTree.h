#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

/// What stands in a folder, at any depth, hidden files too: paths relative to it, folders with a separator at
/// the end, sorted. To be compared as a value.
using DiskTree = std::vector<std::string>;

inline DiskTree ReadTree(const std::string& root) {
    DiskTree tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string name = std::filesystem::relative(entry.path(), root).string();
        tree.push_back(entry.is_directory() && !entry.is_symlink() ? name + '/' : name);
    }
    std::ranges::sort(tree);
    return tree;
}
