#include "conversion/ThumbnailForm.h"

#include "conversion/EngineCommand.h"
#include "core/AppContext.h"
#include "core/Events.h"
#include "dialogs/DialogRuntime.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/ShellLaunching.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace {
constexpr int LingerMs = 500;
}  // namespace

ThumbnailForm::ThumbnailForm(DialogRuntime& runtime, AppContext& context)
    : Form(runtime), m_context(context)
{
    setObjectName(QStringLiteral("ThumbnailForm"));
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint);
    SetFixedClientSizeTwips(3735, 1215);

    m_labelMessage = new QLabel(QStringLiteral("Generating preview..."), this);
    m_labelMessage->setObjectName(QStringLiteral("LabelMessage"));
    m_labelMessage->setAlignment(Qt::AlignCenter);
    PlaceTwips(*m_labelMessage, 120, 180, 3495, 255);

    m_buttonSkip = new QPushButton(QStringLiteral("&Skip"), this);
    m_buttonSkip->setObjectName(QStringLiteral("ButtonSkip"));
    PlaceTwips(*m_buttonSkip, 1260, 660, 1215, 375);

    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(1000);
    m_timer1->setSingleShot(false);

    connect(m_buttonSkip, &QPushButton::clicked, this, Handler(&ThumbnailForm::ButtonSkip_Click));
    connect(m_timer1, &QTimer::timeout, m_timer1, &QTimer::stop);
}

void ThumbnailForm::Form_Load()
{
    ApplyDialogLanguage(*this,
                        {{{2101}, CaptionOf(m_labelMessage)}, {{2102}, CaptionOf(m_buttonSkip)}});
}

void ThumbnailForm::ButtonSkip_Click()
{
    m_skipped = true;
}

void ThumbnailForm::Form_Activate()
{
    if (!m_activated) {
        m_activated = true;
        m_skipped = false;
        RunPreview();
    }
    Runtime().Hide(*this);
    Runtime().Unload(*this);
}

void ThumbnailForm::RunPreview()
{
    // The stored document asks for the first page as a small bitmap for this one run; the run's
    // record keeps the user's values.
    RunState preview = m_context.state;
    preview.UsingPageRange = 1;
    preview.ExtractToBMP = 1;
    preview.PageFrom = 0;
    preview.PageTo = 0;
    preview.ZoomDpi = 20;
    SaveOptions(preview, m_context.settings, false);

    ProcessHandle process;
    const qint32 code = LaunchProcess(
        m_context.launcher, this, OpenVerb, u'"' + EngineProgram(m_context.applicationDir) + u'"',
        PreviewArguments(m_context.state), ShowNormal, process, qint16{-1});
    if (!ShellSucceeded(static_cast<quint32>(code)))
        return;
    while (!process->WaitForEnd(WaitSliceMs)) {
        PumpEvents();
        if (m_skipped)
            break;
    }
    // A skipped engine runs on by itself; letting go of it still collects it when it ends.
    process.reset();
    if (m_skipped)
        return;
    m_timer1->setInterval(LingerMs);
    m_timer1->start();
    // The dialog lingers for a moment; sleeping until the next event spares the processor.
    while (m_timer1->isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}
