#pragma once

// Opens a document in the application that the desktop associates with its type: the
// freedesktop association database (mimeapps.list and desktop entries) that every Linux desktop
// shares, read through GIO. The application is started and let go of; nothing waits for it.

#include <QString>

#include <memory>

class DocumentOpener
{
public:
    enum class Result { Opened, NoAssociation, StartFailed, OutOfMemory };

    virtual ~DocumentOpener() = default;
    // `path` is an absolute path to an existing file.
    virtual Result Open(const QString& path) = 0;
};

std::unique_ptr<DocumentOpener> CreateDocumentOpener();
