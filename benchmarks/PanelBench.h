#pragma once

#include <QLineEdit>
#include <QTemporaryDir>
#include <memory>

#include "benchmarks/BenchedTree.h"

namespace bench {

/// The real panel, loaded from its library, in the real main window, over the real disk. One at a time, since
/// it sets the process's services up. UI thread.
class PanelBench : public BenchedTree {
public:
    /// Throws std::runtime_error when the panel cannot be loaded.
    PanelBench();
    ~PanelBench() override;

    void Open(const std::string& folder) override;
    void Close() override;
    void PrepareFolders(const std::string& folder, int rows) override;
    void OpenWithFolders(const std::string& folder) override { Open(folder); }
    QTreeView& GetView() override { return *mView; }
    int GetSizeSection() const override { return 4; }
    void Zoom(int steps) override;
    void SelectAll() override;
    void Search(const QString& text) override;
    QTreeView& GetSearchView() override { return *mSearchView; }
    /// Sends a command as a menu does.
    void Send(int command);

private:
    struct Program;

    void LoadPanel();
    void FindWidgets();

    QTemporaryDir mProfileFolder;
    std::unique_ptr<Program> mProgram;
    QTreeView* mView = nullptr;
    QTreeView* mSearchView = nullptr;
    QLineEdit* mSearchField = nullptr;
};

}  // namespace bench
