#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/toolkit/UI_MultiColumnTreeRow.h"

/// Drag and drop, within the program and with others. UI thread.
namespace host {

/// The system data type of generic data.
inline constexpr char kUTTypeData[] = "public.data";

/// The host's data type of files: what other programs give and take as "text/uri-list" (RFC 2483, RFC 8089).
inline constexpr char kFilesType[] = "host.datatype.files";

/// Declares a drag-and-drop data type of the panel's own as a kind of `systemType`. Declaring it again
/// changes nothing. UI thread.
ZUHOST_API void RegisterCustomDataType(std::string_view type, std::string_view systemType);

/// What may be, or has been, done with what is dragged: flags. Other programs are only ever offered copies.
inline constexpr unsigned kDragAction_None = 0;
inline constexpr unsigned kDragAction_Copy = 1;
inline constexpr unsigned kDragAction_Move = 2;

/// The window system's event behind a pointer event. Passed through by panels.
class OS_Event {
public:
    struct Impl;
    explicit OS_Event(Impl& impl) : mImpl(&impl) {}
    Impl& GetImpl() const { return *mImpl; }

private:
    Impl* mImpl;
};

/// What the pointer does, told while it is being dealt with.
class UI_MouseEvent {
public:
    UI_MouseEvent(const OS_Event& event, Point point) : mEvent(event), mPoint(point) {}
    const OS_Event& GetOSEvent() const { return mEvent; }
    /// In view units of the node that tells it.
    Point GetPoint() const { return mPoint; }

private:
    OS_Event mEvent;
    Point mPoint;
};

/// What is about to be dragged out of a node.
class ZUHOST_API OS_SendData {
public:
    struct Impl;

    explicit OS_SendData(const OS_Event& event);
    ~OS_SendData();
    OS_SendData(const OS_SendData&) = delete;
    OS_SendData& operator=(const OS_SendData&) = delete;

    /// Adds data of a declared type (`RegisterCustomDataType`), copied. Every window of the program can read
    /// it, those of other processes too; no other program understands it.
    void PutAsBytes(std::string_view type, const void* bytes, std::size_t count);
    /// Adds files and folders (absolute paths) for other programs, which may copy them.
    void PutFiles(const UTF16StringVec& paths);
    /// What shows beside the pointer: the (first) item's name, and how many there are if more than one.
    void SetPicture(const UTF16String& name, std::size_t count);

    /// Lets the user drag, and returns when that has ended; the window lives meanwhile, so that anything may
    /// have changed or gone. Escape ends it. `actions` are the flags that are allowed: files are offered only
    /// with `kDragAction_Copy`. `result` is what was done: `kDragAction_Move` when a window of this process
    /// took it (which does its part later), `kDragAction_Copy` when another process did. Returns false when
    /// nobody took it. Once only.
    ///
    /// When the event is the command to cut, the data goes to the clipboard, nobody drags, and `result` is
    /// `kDragAction_None` with true: who pastes it is told of a drop.
    bool DoDragAndDrop(unsigned actions, unsigned& result);

private:
    std::unique_ptr<Impl> mImpl;
};

/// What is being dragged over a target. Valid as long as it is kept; asks nobody.
class ZUHOST_API OS_ReceiveData {
public:
    struct Impl;

    explicit OS_ReceiveData(std::unique_ptr<Impl> impl);
    ~OS_ReceiveData();

    /// True when there is data of that type. Files that come together with data of a panel's own type are that
    /// panel's rows, and `kFilesType` is not said to be there.
    bool HasType(std::string_view type) const;
    /// The data of a declared type; empty when there is none.
    std::string GetBytes(std::string_view type) const;
    /// The files and folders, as normalised absolute paths, each once, in their order; also those of rows.
    const UTF16StringVec& GetFilePaths() const;
    /// How many entries of the list of files are none of this machine's: on other machines, or malformed. They
    /// are not among the paths.
    std::size_t CountOfForeignFiles() const;
    /// True when the drag began in a window of this process.
    bool IsFromThisProcess() const;

    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

/// What a target is told.
inline constexpr int kDropAction_Entered = 0;
inline constexpr int kDropAction_Moved = 1;
/// The drag has left, or has ended without a drop.
inline constexpr int kDropAction_Left = 2;
inline constexpr int kDropAction_Dropped = 3;

/// A drag over a target: valid during the call.
struct UI_DropData {
    /// Null when the drag carries nothing that the host can read.
    const OS_ReceiveData* mReceived = nullptr;
    /// In a tree: the row under the pointer; empty for none.
    RowRef mRow;
    /// In view units of the target.
    Point mPosition;
};

}  // namespace host
