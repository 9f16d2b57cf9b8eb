#pragma once

#include <string>

#include "desk/project/document/ProjectDocuments.h"
#include "host/files/FileException.h"

namespace desk {

/// An operation on a document: only one at a time, however many questions and events lie between.
class ProjectDocuments::Operation {
public:
    Operation(ProjectDocuments& documents, const ProjectDocumentRef& document);
    ~Operation();
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    /// False when the document is not open, or another operation on it is under way.
    bool HasBegun() const { return mHasBegun; }

private:
    ProjectDocuments& mDocuments;
    ProjectDocumentRef mDocument;
    bool mHasBegun = false;
};

/// `DescribeReason`, ready to be shown; the operation goes to the log.
host::UTF16String ReasonOf(const host::FileException& exception);

/// Makes a new file on a worker (`MakeNewFile`). False when something stands at `path`; throws
/// `host::FileException`.
bool CreateFileOnDisk(const host::UTF16String& path, const std::string& bytes);
/// The same, as a copy of the file at `source` (bytes); the user can cancel it (ECANCELED).
bool CopyFileOnDisk(const std::string& source, const host::UTF16String& path);

}  // namespace desk
