#pragma once

// The GIO call behind the document opener, in a file free of Qt: GIO's headers name a struct
// member "signals", which Qt defines as a keyword.

#include <string>

enum class OpenResult { Opened, NoAssociation, StartFailed, OutOfMemory };

// `path` is an absolute local path in the file system's encoding.
OpenResult OpenWithAssociatedApplication(const std::string& path);
