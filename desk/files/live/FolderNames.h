#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// A search text, prepared for looking through many names: the case of the letters A to Z is ignored, all else
/// counts as it is. An empty text is in every name. Immutable; any thread.
class ZUHOST_API FoldedText {
public:
    explicit FoldedText(std::u16string_view text);

    /// True when `name` contains the text.
    bool IsIn(std::u16string_view name) const;

private:
    friend class FolderNames;

    static constexpr std::size_t kNowhere = ~std::size_t{0};

    /// Where the text stands first in `bytes` (UTF-8) at or behind `begin`; `kNowhere` when it does not.
    std::size_t FindIn(std::string_view bytes, std::size_t begin) const;
    bool StandsAt(const char* place) const;

    std::u16string mUnits;
    std::string mBytes;
    /// False for a text with half a pair in it, which bytes cannot be compared with.
    bool mHasBytes = false;
};

/// The names of one folder's items as a search sees them: what is displayed of them, a project's without its
/// extension, in the bytes of the disk, one behind the other, so that looking through them is one pass over
/// memory. A byte a name beyond the name itself. Immutable; any thread.
class ZUHOST_API FolderNames {
public:
    enum class Kind : std::uint8_t {
        Folder,
        /// A symbolic link to a folder: found, but not entered.
        FolderLink,
        Project,
        /// A symbolic link of which nobody has found out where it leads.
        Link
    };
    struct Item {
        /// Of a folder that is called like a project, with a separator at its end.
        host::UTF16String mPath;
        Kind mKind;
    };

    /// Collects the names of `folder` (normalised).
    class Maker {
    public:
        explicit Maker(host::UTF16String folder) : mFolder(std::move(folder)) {}
        /// A name of the folder, in the bytes of the disk or in UTF-16; for `Kind::Project` a project's.
        void Add(std::string_view name, Kind kind);
        void Add(std::u16string_view name, Kind kind);
        std::shared_ptr<const FolderNames> Make() &&;

    private:
        friend class FolderNames;
        struct Section {
            std::string mBytes;
            std::vector<std::pair<std::uint32_t, std::string>> mEndings;
        };
        host::UTF16String mFolder;
        Section mSections[4];
    };

    explicit FolderNames(Maker&& maker);

    /// True for the name of a project.
    static bool IsProject(std::string_view name);
    static bool IsProject(std::u16string_view name);
    /// What is displayed of the item at `path`; what has a separator behind it is no project.
    static std::u16string_view DisplayNameOf(std::u16string_view path);

    /// The folder's path.
    const host::UTF16String& Folder() const { return mFolder; }
    /// True when both hold the same names, in the same order.
    bool operator==(const FolderNames&) const = default;
    std::size_t CountBytes() const { return mBytes.size(); }
    /// Appends the items whose names contain `text`, in no order.
    void Find(const FoldedText& text, std::vector<Item>& found) const;
    /// The paths of the folders in it, without links, in no order.
    host::UTF16StringVec FindFolders() const;

private:
    Kind KindAt(std::size_t begin) const;
    host::UTF16String PathOf(std::size_t begin, std::size_t end) const;
    Item ItemAt(std::size_t begin, std::size_t end) const;
    void FindByUnits(const FoldedText& text, std::vector<Item>& found) const;

    host::UTF16String mFolder;
    /// Each name with a '/' behind it, which no name contains; folders first, in the order of the kinds.
    std::string mBytes;
    /// Where the names of each kind end.
    std::uint32_t mEnds[4];
    /// What is not displayed of a name, by its begin, where its kind does not say it.
    std::vector<std::pair<std::uint32_t, std::string>> mEndings;
};

/// The names of a folder that are known.
struct KnownNames {
    /// How far whoever asked is with following the folder: has not asked for that, or asked for it, or awaits
    /// it
    /// (`FolderFollower::Follow`), or is told what changes.
    enum class Following : std::uint8_t { NotAsked, Asked, Awaited, Told };

    std::shared_ptr<const FolderNames> mNames;
    Following mFollowing = Following::NotAsked;
    /// 0, or why the folder could not be listed again (an errno value).
    int mSystemError = 0;
};

}  // namespace desk
