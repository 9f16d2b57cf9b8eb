#include "desk/framework/PluginLoader.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "desk/core/log/Log.h"
#include "desk/framework/Registrations.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> ListLibraries(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().extension() == ".so") paths.push_back(entry->path().string());
    if (error && error != std::errc::no_such_file_or_directory)
        Log(LogLevel::Warning, "The plug-in folder \"" + folder + "\" could not be listed: " + error.message());
    std::ranges::sort(paths);
    return paths;
}

/// Calls the module factories that the library at `path` has registered.
void MakeModules(const host::UTF16String& path) {
    Registrations& registrations = Registrations::Instance();
    for (const auto& [id, factory] : registrations.mModuleFactories) {
        if (factory.mLibraryPath != path || registrations.mModules.contains(id)) continue;
        std::unique_ptr<host::Module> module(factory.mFactory(path));
        if (!module) throw std::runtime_error("it made no module");
        registrations.mModules[id] = std::move(module);
    }
}

void LoadPlugin(const PluginFile& plugin) {
    Registrations& registrations = Registrations::Instance();
    registrations.mLoadingPath = host::UTF8to16(plugin.mPath);
    const void* library = dlopen(plugin.mPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    const char* const error = library ? nullptr : dlerror();
    registrations.mLoadingPath.clear();
    if (!library) throw std::runtime_error(error ? error : "unknown error");
    MakeModules(host::UTF8to16(plugin.mPath));
}

}  // namespace

std::vector<PluginFile> FindPlugins(const std::vector<std::string>& folders) {
    std::vector<PluginFile> plugins;
    std::set<std::string> seen;
    for (const std::string& folder : folders)
        for (const std::string& path : ListLibraries(folder)) {
            const std::string name = fs::path(path).filename().string();
            if (seen.contains(name) || !seen.insert(path).second) continue;
            plugins.push_back(InspectPlugin(path));
            if (plugins.back().mRefusal.empty()) seen.insert(name);
        }
    return plugins;
}

void LoadPlugins(std::vector<PluginFile>& plugins) {
    for (PluginFile& plugin : plugins) {
        try {
            if (plugin.mRefusal.empty()) LoadPlugin(plugin);
        } catch (const std::exception& error) {
            plugin.mRefusal = std::string("could not be loaded: ") + error.what();
        } catch (...) {
            plugin.mRefusal = "could not be loaded: unknown exception";
        }
        if (!plugin.mRefusal.empty())
            Log(LogLevel::Warning, "The plug-in \"" + fs::path(plugin.mPath).filename().string() + "\" in \"" +
                                       fs::path(plugin.mPath).parent_path().string() + "\" " + plugin.mRefusal);
    }
}

}  // namespace desk
