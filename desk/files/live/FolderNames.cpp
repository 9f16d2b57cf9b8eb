#include "desk/files/live/FolderNames.h"

#include <algorithm>

#include "desk/core/names/FolderPath.h"
#include "host/core/FoldASCII.h"
#include "host/project/ProjectFiles.h"

namespace desk {
namespace {

constexpr char kSeparator = '/';
/// The bytes that are compared in one go, as a vector unit does.
constexpr std::size_t kBlock = 64;

template <class Unit>
constexpr bool IsLetter(Unit unit) {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
}
/// Folds a byte that is compared with `folded`: only letters differ in this bit alone.
constexpr unsigned char MaskFor(char folded) {
    return IsLetter(folded) ? 'a' - 'A' : 0;
}

bool HasHalfPairs(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isHigh = text[i] >= 0xD800 && text[i] <= 0xDBFF;
        const bool isLow = text[i] >= 0xDC00 && text[i] <= 0xDFFF;
        if (isLow) return true;
        if (!isHigh) continue;
        if (++i == text.size() || text[i] < 0xDC00 || text[i] > 0xDFFF) return true;
    }
    return false;
}

const std::string& ProjectExtension() {
    static const std::string sExtension = host::UTF16to8(host::GetProjectFileExtension());
    return sExtension;
}

/// How many units of a name are not displayed.
template <class Unit>
std::size_t CountHidden(std::basic_string_view<Unit> name) {
    const std::string& extension = ProjectExtension();
    const bool isProject =
        name.size() > extension.size() &&
        std::equal(extension.rbegin(), extension.rend(), name.rbegin(), [](char expected, Unit unit) {
            return static_cast<Unit>(expected) == host::FoldASCII(unit);
        });
    return isProject ? extension.size() : 0;
}

bool IsFolder(FolderNames::Kind kind) {
    return kind == FolderNames::Kind::Folder || kind == FolderNames::Kind::FolderLink;
}

}  // namespace

FoldedText::FoldedText(std::u16string_view text) : mUnits(text), mHasBytes(!HasHalfPairs(text)) {
    std::ranges::transform(mUnits, mUnits.begin(), host::FoldASCII<char16_t>);
    if (mHasBytes) mBytes = host::UTF16to8(mUnits);
}

bool FoldedText::IsIn(std::u16string_view name) const {
    return !std::ranges::search(name, mUnits, {}, host::FoldASCII<char16_t>).empty() || mUnits.empty();
}

bool FoldedText::StandsAt(const char* place) const {
    return std::equal(mBytes.begin(), mBytes.end(), place,
                      [](char folded, char byte) { return folded == host::FoldASCII(byte); });
}

/// By the first and the last byte of the text, many places in one go.
std::size_t FoldedText::FindIn(std::string_view bytes, std::size_t begin) const {
    if (bytes.size() < begin + mBytes.size()) return kNowhere;
    const auto* first = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* last = first + mBytes.size() - 1;
    const unsigned char firstMask = MaskFor(mBytes.front());
    const unsigned char lastMask = MaskFor(mBytes.back());
    const auto firstByte = static_cast<unsigned char>(mBytes.front());
    const auto lastByte = static_cast<unsigned char>(mBytes.back());
    const std::size_t end = bytes.size() - mBytes.size() + 1;
    for (std::size_t block = begin; block < end; block += kBlock) {
        const std::size_t count = std::min(kBlock, end - block);
        if (count == kBlock) {
            unsigned char isAny = 0;
            for (std::size_t i = block; i < block + kBlock; ++i)
                isAny |= static_cast<unsigned char>(((first[i] | firstMask) == firstByte) &
                                                    ((last[i] | lastMask) == lastByte));
            if (isAny == 0) continue;
        }
        for (std::size_t i = block; i < block + count; ++i)
            if ((first[i] | firstMask) == firstByte && (last[i] | lastMask) == lastByte &&
                StandsAt(bytes.data() + i))
                return i;
    }
    return kNowhere;
}

void FolderNames::Maker::Add(std::string_view name, Kind kind) {
    Section& section = mSections[static_cast<int>(kind)];
    const std::size_t hidden = IsFolder(kind) ? 0 : CountHidden(name);
    const std::string_view ending = name.substr(name.size() - hidden);
    const std::string_view expected = kind == Kind::Project ? ProjectExtension() : std::string_view();
    if (ending != expected)
        section.mEndings.emplace_back(static_cast<std::uint32_t>(section.mBytes.size()), ending);
    section.mBytes += name.substr(0, name.size() - hidden);
    section.mBytes += kSeparator;
}

void FolderNames::Maker::Add(std::u16string_view name, Kind kind) {
    char ascii[256];
    if (name.size() > sizeof ascii || std::ranges::any_of(name, [](char16_t unit) { return unit >= 0x80; }))
        return Add(host::UTF16to8(name), kind);
    std::ranges::transform(name, ascii, [](char16_t unit) { return static_cast<char>(unit); });
    Add(std::string_view(ascii, name.size()), kind);
}

std::shared_ptr<const FolderNames> FolderNames::Maker::Make() && {
    return std::make_shared<const FolderNames>(std::move(*this));
}

FolderNames::FolderNames(Maker&& maker) : mFolder(std::move(maker.mFolder)) {
    std::size_t size = 0;
    for (const Maker::Section& section : maker.mSections) size += section.mBytes.size();
    mBytes.reserve(size);
    for (int kind = 0; kind < 4; ++kind) {
        Maker::Section& section = maker.mSections[kind];
        for (auto& [begin, ending] : section.mEndings)
            mEndings.emplace_back(static_cast<std::uint32_t>(mBytes.size() + begin), std::move(ending));
        mBytes += section.mBytes;
        mEnds[kind] = static_cast<std::uint32_t>(mBytes.size());
    }
}

bool FolderNames::IsProject(std::string_view name) {
    return CountHidden(name) != 0;
}

bool FolderNames::IsProject(std::u16string_view name) {
    return CountHidden(name) != 0;
}

std::u16string_view FolderNames::DisplayNameOf(std::u16string_view path) {
    const bool isFolder = path.ends_with(u'/');
    if (isFolder) path.remove_suffix(1);
    const std::u16string_view name = path.substr(path.rfind(u'/') + 1);
    return isFolder ? name : name.substr(0, name.size() - CountHidden(name));
}

FolderNames::Kind FolderNames::KindAt(std::size_t begin) const {
    return static_cast<Kind>(std::ranges::upper_bound(mEnds, begin) - mEnds);
}

host::UTF16String FolderNames::PathOf(std::size_t begin, std::size_t end) const {
    std::string name = mBytes.substr(begin, end - begin);
    const auto ending =
        std::ranges::lower_bound(mEndings, begin, {}, [](const auto& each) { return each.first; });
    if (ending != mEndings.end() && ending->first == begin)
        name += ending->second;
    else if (KindAt(begin) == Kind::Project)
        name += ProjectExtension();
    return JoinPath<host::UTF16String>(mFolder, host::UTF8to16(name));
}

FolderNames::Item FolderNames::ItemAt(std::size_t begin, std::size_t end) const {
    Item item{PathOf(begin, end), KindAt(begin)};
    if (IsFolder(item.mKind) && CountHidden(std::string_view(mBytes).substr(begin, end - begin)) != 0)
        item.mPath += u'/';
    return item;
}

void FolderNames::Find(const FoldedText& text, std::vector<Item>& found) const {
    if (!text.mHasBytes || text.mBytes.empty()) return FindByUnits(text, found);
    if (text.mBytes.find(kSeparator) != std::string::npos) return;
    for (std::size_t place = 0; (place = text.FindIn(mBytes, place)) != FoldedText::kNowhere; ++place) {
        const std::size_t begin = mBytes.rfind(kSeparator, place) + 1;
        const std::size_t end = mBytes.find(kSeparator, place);
        found.push_back(ItemAt(begin, end));
        place = end;
    }
}

/// For texts that cannot be looked for in bytes.
void FolderNames::FindByUnits(const FoldedText& text, std::vector<Item>& found) const {
    for (std::size_t begin = 0; begin < mBytes.size();) {
        const std::size_t end = mBytes.find(kSeparator, begin);
        if (text.IsIn(host::UTF8to16(std::string_view(mBytes).substr(begin, end - begin))))
            found.push_back(ItemAt(begin, end));
        begin = end + 1;
    }
}

host::UTF16StringVec FolderNames::FindFolders() const {
    host::UTF16StringVec folders;
    for (std::size_t begin = 0; begin < mEnds[0];) {
        const std::size_t end = mBytes.find(kSeparator, begin);
        folders.push_back(PathOf(begin, end));
        begin = end + 1;
    }
    return folders;
}

}  // namespace desk
