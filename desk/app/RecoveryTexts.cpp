#include "desk/app/RecoveryTexts.h"

#include <QDateTime>
#include <QLocale>

#include "desk/core/language/Localized.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/File.h"

namespace desk {

QString ShownTime(std::int64_t secondsSinceEpoch) {
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(secondsSinceEpoch), QLocale::ShortFormat);
}

QString DescribeFolder(const KeptText& text) {
    return ToDisplayText(FolderOf(text.mProject));
}

QString DescribeText(const KeptTextFile& file) {
    const QString text = Localized(
        "$$$/Desk/Recovery/Text=Unsaved text of @0, @1",
        {ToUTF16(ShownTime(file.mText.mTime)), host::GetDisplayStringOfFileSize(file.mText.mText.mSize)});
    if (file.mStanding != OwnerStanding::Unknown) return text;
    return Localized("$$$/Desk/Recovery/Elsewhere=@0, from @1, where it may still be open",
                     {ToUTF16(text), ToUTF16(ToDisplayText(file.mText.mOwner.mMachine))});
}

QString DescribeFile(const std::optional<FileSinceKept>& found) {
    using State = FileSinceKept::State;
    if (!found) return Localized("$$$/Desk/Recovery/Looking=Looking at what the file holds…");
    switch (found->mState) {
        case State::Unchanged:
            return Localized("$$$/Desk/Recovery/Unchanged=The file has not changed since");
        case State::HoldsText:
            return Localized("$$$/Desk/Recovery/HoldsText=The file holds this text already");
        case State::Changed:
            return Localized("$$$/Desk/Recovery/Changed=The file was changed: @0",
                             {ToUTF16(ShownTime(found->mModified / 1'000'000'000))});
        case State::Gone:
            return Localized("$$$/Desk/Recovery/Gone=The file is no longer there");
        case State::FolderGone:
            return Localized(
                "$$$/Desk/Recovery/FolderGone=The folder is not there, or its volume is not mounted");
        case State::NotTold:
            break;
    }
    return Localized("$$$/Desk/Recovery/NotTold=The volume cannot be reached: @0",
                     {host::DescribeSystemError(found->mSystemError)});
}

}  // namespace desk
