#include "intake/PageRangeChoice.h"

#include "core/LocalText.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PageRangeForm.h"

#include <QComboBox>
#include <QPointer>

void ComboPageRangeChosen(RunState& state, WelcomeForm& welcome)
{
    QComboBox& combo = welcome.ComboPageRange();
    const QString specify = LocalText(1613, QStringLiteral("Specify"));
    if (combo.currentIndex() != 1) {
        combo.setItemText(1, specify);
        return;
    }
    DialogRuntime& runtime = welcome.Runtime();
    QPointer<PageRangeForm> form;
    runtime.Instance(form, state);
    runtime.ShowModal(*form, &welcome);
    // A dialog closed by its window frame is gone, and with it any acceptance.
    const bool accepted = form && runtime.IsLoaded(form) && form->Accepted != 0;
    if (accepted) {
        combo.setItemText(1, form->FromText() + QStringLiteral(" - ") + form->ToText());
    } else {
        welcome.SetPageRangeIndex(0);
        combo.setItemText(1, specify);
    }
    if (form && runtime.IsLoaded(form))
        runtime.Unload(*form);
}
