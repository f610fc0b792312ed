#include "dialogs/Placement.h"

#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Form.h"
#include "platform/ApplicationPath.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessUtilityLibrary.h"
#include "platform/WindowGeometry.h"
#include "run/RunState.h"

TwipsBox CenteredOver(const TwipsBox& dialog, const TwipsBox& parent, float screenHeight)
{
    TwipsBox placed = dialog;
    placed.left = (parent.width - dialog.width) / 2 + parent.left;
    placed.top = (parent.height - dialog.height) / 2 + parent.top;
    // A dialog as tall (or as wide) as its parent stays exactly over it, even off the screen.
    if (dialog.height != parent.height) {
        if (placed.top < 0)
            placed.top = 0;
        else if (placed.height + placed.top > screenHeight)
            placed.top = screenHeight - placed.height;
    }
    if (dialog.width != parent.width && placed.left < 0)
        placed.left = 0;
    return placed;
}

void CenterDialogOver(Form& dialog, const Form& parent)
{
    const TwipsBox placed = CenteredOver(
        {dialog.Left(), dialog.Top(), dialog.Width(), dialog.Height()},
        {parent.Left(), parent.Top(), parent.Width(), parent.Height()}, dialog.ScreenHeight());
    dialog.Move(placed.left, placed.top);
}

namespace {

// Centres the dialog on a screen rectangle in pixels, keeping it off the left and top edges.
void CenterOnRect(Form& dialog, const ScreenRect& rect)
{
    const float w = dialog.ScaleXToTwips(static_cast<float>(rect.right - rect.left));
    const float l = dialog.ScaleXToTwips(static_cast<float>(rect.left));
    const float h = dialog.ScaleYToTwips(static_cast<float>(rect.bottom - rect.top));
    const float t = dialog.ScaleYToTwips(static_cast<float>(rect.top));
    float left = (w - dialog.Width()) / 2 + l;
    float top = (h - dialog.Height()) / 2 + t;
    if (left < 0)
        left = 0;
    if (top < 0)
        top = 0;
    dialog.Move(left, top);
}

}  // namespace

void PlaceNearParent(Form& dialog, AppContext& context)
{
    const WorkingDirectoryGuard directory(context.applicationDir);
    ProcessUtilityLibrary& library = context.processUtility;

    ScreenRect rect;
    bool found = false;
    if (const qint32 self = context.geometry.GetCurrentProcessId()) {
        if (const qint32 parent = library.GetParentProcessID(self)) {
            if (const qint64 window = library.GetProcessHwnd(parent))
                found = library.GetWindowRect(window, rect);
        }
    }
    if (!found)
        rect = context.geometry.DesktopRect();
    CenterOnRect(dialog, rect);
}

void PlaceNearWord(Form& dialog, AppContext& context)
{
    const WorkingDirectoryGuard directory(context.applicationDir);
    ProcessUtilityLibrary& library = context.processUtility;

    ScreenRect rect;
    bool found = false;
    if (const qint32 word = library.GetProcessID(OfficeProcessName, 0)) {
        const qint64 window = library.GetProcessHwndEx(word, context.state.WordWindowHint);
        if (window)
            found = library.GetWindowRect(window, rect);
    }
    if (!found)
        rect = context.geometry.DesktopRect();
    CenterOnRect(dialog, rect);
}

void UnloadOtherDialogs(DialogRuntime& runtime, const Form* welcome)
{
    for (qsizetype i = runtime.LoadedForms().size() - 1; i >= 1; --i) {
        // An unload handler may have unloaded other dialogs along with its own.
        const QList<Form*>& loaded = runtime.LoadedForms();
        if (i >= loaded.size())
            continue;
        Form* form = loaded.at(i);
        if (form != welcome)
            runtime.Unload(*form);
    }
}

void LeadOnTo(Form& page, Form& next, Form& welcome)
{
    CenterDialogOver(next, page);
    page.Runtime().Hide(page);
    page.Runtime().ShowModal(next, &welcome);
}
