#include "desk/app/ProjectTexts.h"

#include <QDateTime>
#include <QLocale>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

QStringList States(const ProjectDocument& document) {
    QStringList states;
    if (HasLostLock(document))
        states << Localized("$$$/Desk/Projects/LockLost=lock lost");
    else if (document.IsReadOnly())
        states << Localized("$$$/Desk/Projects/ReadOnly=read-only");
    else if (!document.GetTrouble().empty())
        states << Localized("$$$/Desk/Projects/NotSavableNow=cannot be saved now");
    if (document.IsOutOfDate()) states << Localized("$$$/Desk/Projects/OutOfDate=out of date");
    return states;
}

QString WithStates(const QString& title, const QStringList& states) {
    return states.isEmpty() ? title
                            : title + QLatin1String(" (") + states.join(QLatin1String(", ")) + QLatin1Char(')');
}

}  // namespace

QString ProjectName(const host::UTF16String& path) {
    return ToDisplayText(host::PathUtils::GetFilePart(path));
}

QString ProjectName(const ProjectDocument& document) {
    return ProjectName(document.GetProjectPath());
}

QString ProjectTitle(const ProjectDocument& document) {
    const QString mark = document.IsDirty() ? QStringLiteral(" •") : QString();
    return WithStates(ProjectName(document) + mark, States(document));
}

QString SpokenProjectTitle(const ProjectDocument& document) {
    QStringList states = States(document);
    if (document.IsDirty()) states.prepend(Localized("$$$/Desk/Projects/Unsaved=unsaved changes"));
    return WithStates(ProjectName(document), states);
}

QString ProjectToolTip(const ProjectDocument& document) {
    QStringList states = States(document);
    if (document.IsDirty()) states.prepend(Localized("$$$/Desk/Projects/Unsaved=unsaved changes"));
    const QString path = ToDisplayText(document.GetProjectPath());
    return states.isEmpty() ? path : path + QLatin1Char('\n') + states.join(QLatin1String(", "));
}

QString DescribeContent(const ProjectContent& content) {
    switch (content.mKind) {
        case ProjectContent::Kind::EditableText:
            return {};
        case ProjectContent::Kind::Large:
            return Localized("$$$/Desk/Projects/Large=This project is too large to be shown as text.");
        case ProjectContent::Kind::Text:
            if (content.mObstacle == EditedText::Obstacle::ManyLines)
                return Localized(
                    "$$$/Desk/Projects/ManyLines=This project is a text with more lines than can be "
                    "shown.");
            return content.mObstacle == EditedText::Obstacle::LongLine
                       ? Localized(
                             "$$$/Desk/Projects/LongLine=This project is a text with a line that is too long "
                             "to be shown.")
                       : Localized(
                             "$$$/Desk/Projects/Characters=This project is a text with characters that "
                             "editing would change; it is not shown.");
        case ProjectContent::Kind::Binary:
            break;
    }
    return Localized("$$$/Desk/Projects/Binary=This project is no text.");
}

QString DescribeFile(const ProjectContent& content) {
    const QDateTime modified = QDateTime::fromMSecsSinceEpoch(content.mStatus.mModified / 1'000'000);
    return Localized("$$$/Desk/Projects/File=@0, modified @1",
                     {host::GetDisplayStringOfFileSize(content.mStatus.mSize),
                      ToUTF16(QLocale().toString(modified, QLocale::ShortFormat))});
}

QString DescribeRecovery(const ProjectDocument& document) {
    if (!document.IsDirty())
        return Localized(
            "$$$/Desk/Projects/RecoveredUndone=The recovered text is undone, and stays kept until it is saved or "
            "discarded. Redo shows it again.");
    return document.IsBasedOnOlder()
               ? Localized(
                     "$$$/Desk/Projects/RecoveredOlder=This text was recovered and is not saved. The file has changed "
                     "since it was written; Undo shows what the file holds.")
               : Localized(
                     "$$$/Desk/Projects/Recovered=This text was recovered and is not saved. Undo shows what the file "
                     "holds.");
}

bool HasLostLock(const ProjectDocument& document) {
    for (const auto& lock : {document.GetLock(), document.GetTargetLock()})
        if (lock && !lock->IsLocked()) return true;
    return false;
}

}  // namespace desk
