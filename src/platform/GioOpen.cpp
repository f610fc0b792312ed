// GIO's headers name a struct member "signals", which Qt defines as a keyword: this file stays
// free of Qt.
#include <gio/gio.h>

#include "platform/GioOpen.h"

OpenResult OpenWithAssociatedApplication(const std::string& path)
{
    GFile* file = g_file_new_for_path(path.c_str());
    gchar* uri = g_file_get_uri(file);
    g_object_unref(file);
    GError* error = nullptr;
    const gboolean launched = g_app_info_launch_default_for_uri(uri, nullptr, &error);
    g_free(uri);
    if (launched)
        return OpenResult::Opened;
    OpenResult result = OpenResult::StartFailed;
    if (error && error->domain == G_IO_ERROR &&
        (error->code == G_IO_ERROR_NOT_SUPPORTED || error->code == G_IO_ERROR_NOT_FOUND))
        result = OpenResult::NoAssociation;
    else if (error && error->domain == G_SPAWN_ERROR && error->code == G_SPAWN_ERROR_NOMEM)
        result = OpenResult::OutOfMemory;
    g_clear_error(&error);
    return result;
}
