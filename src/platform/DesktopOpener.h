#pragma once

// Opens a document in the application that the desktop associates with its type, through GIO:
// the freedesktop association database (mimeapps.list and desktop entries) that every Linux
// desktop shares. The application is started and let go of; nothing waits for it.

#include <string>

enum class OpenResult { Opened, NoAssociation, StartFailed, OutOfMemory };

// `path` is an absolute local path in the file system's encoding.
OpenResult OpenWithAssociatedApplication(const std::string& path);
