#pragma once

/// The IDs under which the parts of a panel and the host know each other.
namespace host {

inline constexpr char16_t kZuProductionFolderModuleID[] = u"host.module.zuproductionfolder";
inline constexpr char16_t kZuProductionFolderHandlerID[] = u"host.handler.zuproductionfolder";
/// The host's panel that shows what is being copied.
inline constexpr char16_t kProgressHandlerID[] = u"host.handler.progress";
inline constexpr char16_t kZuProductionFolderWindowTypeID[] = u"host.windowtype.zuproductionfolder";
inline constexpr char16_t kDefaultWindowID[] = u"host.window.default";
inline constexpr char16_t kDefaultWindowContextID[] = u"host.windowcontext.default";

/// The version of the contracts in `host/`. It stands in every plug-in's entry record; the host loads
/// only plug-ins of its own version.
inline constexpr unsigned kSdkVersion = 1;

}  // namespace host
