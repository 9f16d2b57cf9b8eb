#include "desk/app/WindowTitle.h"

#include <QStringList>
#include <QWidget>

#include "desk/app/ProjectArea.h"
#include "desk/app/ProjectTexts.h"
#include "desk/core/names/Isolation.h"
#include "desk/core/names/QtStrings.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/Theme.h"
#include "host/files/PathUtils.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {

WindowTitle::WindowTitle(QWidget& window, ProjectArea& projects) : mWindow(window), mProjects(projects) {
    QObject::connect(&projects, &ProjectArea::ActiveProjectChanged, &window, [this] { Update(); });
    host::AddListener(host::kStation_ZuProductionFolderPanel, this);
    Update();
}

WindowTitle::~WindowTitle() {
    host::RemoveListener(host::kStation_ZuProductionFolderPanel, this);
}

void WindowTitle::Update() {
    QStringList parts;
    const auto add = [&parts](const QString& name) { parts << ToQString(Isolate(ToUTF16(name))); };
    if (const ProjectDocumentRef active = mProjects.GetActiveDocument())
        add(ToWindowTitle(ProjectTitle(*active)));
    const host::UTF16String& folder = Production::Instance().GetFolder();
    if (!folder.empty()) add(ToWindowTitle(ToDisplayText(host::PathUtils::GetFullFilePart(folder))));
    parts << QStringLiteral("Production Desk");
    mWindow.setWindowTitle(parts.join(QStringLiteral(" — ")));
}

}  // namespace desk
