#include "dialogs/FileDialogs.h"

#include "services/MessageBoxes.h"

#include <QFileDialog>
#include <QFileInfo>

namespace {

QFileDialog* MakeDialog(QWidget* owner, const QString& barFilter)
{
    auto* dialog = new QFileDialog(owner);
    dialog->setObjectName(QStringLiteral("CommonDialog1"));
    dialog->setAttribute(Qt::WA_DeleteOnClose, false);
    // The widget-based dialog behaves the same on every desktop and can be driven in tests.
    dialog->setOption(QFileDialog::DontUseNativeDialog, true);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->setNameFilter(DialogFilter(barFilter));
    return dialog;
}

}  // namespace

QString DialogFilter(const QString& barFilter)
{
    const qsizetype bar = barFilter.indexOf(u'|');
    if (bar < 0)
        return barFilter;
    // The description already names the pattern; the dialog shows it and filters by it.
    const QString description = barFilter.left(bar);
    const QString pattern = barFilter.mid(bar + 1);
    return description.contains(pattern) ? description
                                         : description + QStringLiteral(" (") + pattern + u')';
}

QString AskOpenFileName(QWidget* owner, const QString& barFilter)
{
    QFileDialog* dialog = MakeDialog(owner, barFilter);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setWindowTitle(ApplicationTitle);
    QString chosen;
    if (dialog->exec() == QDialog::Accepted && !dialog->selectedFiles().isEmpty())
        chosen = dialog->selectedFiles().constFirst();
    delete dialog;
    return chosen;
}

std::optional<QString> AskSaveFileName(QWidget* owner, const QString& proposedPath,
                                       const QString& barFilter)
{
    QFileDialog* dialog = MakeDialog(owner, barFilter);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setWindowTitle(ApplicationTitle);
    // QFileDialog asks before it replaces an existing file unless told not to.
    dialog->setOption(QFileDialog::DontConfirmOverwrite, false);
    const QFileInfo proposal(proposedPath);
    if (!proposedPath.isEmpty()) {
        dialog->setDirectory(proposal.absolutePath());
        dialog->selectFile(proposal.fileName());
    }
    std::optional<QString> chosen;
    if (dialog->exec() == QDialog::Accepted && !dialog->selectedFiles().isEmpty())
        chosen = dialog->selectedFiles().constFirst();
    delete dialog;
    return chosen;
}
