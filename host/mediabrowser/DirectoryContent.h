#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/core/Strings.h"

namespace host {

/// Items of one folder: their names in one string, so that a long list costs little more than they do. Immutable
/// once it is handed over; then any thread.
class DirectoryContent {
public:
    struct Item {
        /// In the folder. Valid as long as the content is.
        std::u16string_view mName;
        /// True for what is known to be a folder, or a link to one.
        bool mIsFolder = false;
    };
    class Iterator {
    public:
        using iterator_concept = std::input_iterator_tag;
        using value_type = Item;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        Iterator(const DirectoryContent& content, std::size_t place) : mContent(&content), mPlace(place) {}
        Item operator*() const { return (*mContent)[mPlace]; }
        Iterator& operator++() {
            ++mPlace;
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++mPlace;
            return before;
        }
        bool operator==(const Iterator& other) const { return mPlace == other.mPlace; }

    private:
        const DirectoryContent* mContent = nullptr;
        std::size_t mPlace = 0;
    };

    /// `folder`: its path, normalised.
    explicit DirectoryContent(UTF16String folder = {}) : mFolder(std::move(folder)) {}

    const UTF16String& GetFolder() const { return mFolder; }
    std::size_t size() const { return mItems.size(); }
    bool empty() const { return mItems.empty(); }
    Item operator[](std::size_t place) const {
        const Place& item = mItems[place];
        return {std::u16string_view(mNames).substr(item.mBegin, item.mLength), item.mIsFolder != 0};
    }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }
    /// The path of an item; composed anew each time.
    UTF16String PathOf(const Item& item) const {
        UTF16String path;
        path.reserve(mFolder.size() + 1 + item.mName.size());
        path += mFolder;
        if (!path.ends_with(u'/')) path += u'/';
        return path += item.mName;
    }

    void Reserve(std::size_t items, std::size_t nameUnits) {
        mItems.reserve(items);
        mNames.reserve(nameUnits);
    }
    void Add(std::u16string_view name, bool isFolder) {
        mItems.push_back({static_cast<std::uint32_t>(mNames.size()),
                          static_cast<std::uint32_t>(name.size()) & 0x7FFFFFFF, isFolder});
        mNames += name;
    }

private:
    struct Place {
        std::uint32_t mBegin;
        std::uint32_t mLength : 31;
        std::uint32_t mIsFolder : 1;
    };

    UTF16String mFolder;
    std::u16string mNames;
    std::vector<Place> mItems;
};

}  // namespace host
