#include "dialogs/FileDialogs.h"

#include "services/MessageBoxes.h"

#include <QFileDialog>
#include <QFileInfo>

namespace {

// A save dialog that settles the final name before it accepts, so that its replace question is
// about the file that will really be replaced.
class TargetFileDialog final : public QFileDialog
{
public:
    TargetFileDialog(QWidget* owner, std::function<QString(const QString&)> finalName)
        : QFileDialog(owner), m_finalName(std::move(finalName))
    {
    }

    void accept() override
    {
        const QStringList chosen = selectedFiles();
        if (m_finalName && chosen.size() == 1 && !QFileInfo(chosen.first()).isDir()) {
            const QString finalName = m_finalName(chosen.first());
            if (finalName != chosen.first())
                selectFile(finalName);
        }
        QFileDialog::accept();
    }

private:
    std::function<QString(const QString&)> m_finalName;
};

QFileDialog* SetUpDialog(QFileDialog* dialog, const QString& barFilter)
{
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

QString AskOpenFileName(QWidget* owner, const QString& barFilter, const QString& startDirectory)
{
    QFileDialog* dialog = SetUpDialog(new QFileDialog(owner), barFilter);
    dialog->setDirectory(startDirectory);
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
                                       const QString& barFilter,
                                       const std::function<QString(const QString&)>& finalName)
{
    QFileDialog* dialog = SetUpDialog(new TargetFileDialog(owner, finalName), barFilter);
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
