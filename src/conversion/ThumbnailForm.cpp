#include "conversion/ThumbnailForm.h"

#include "conversion/EngineCommand.h"
#include "dialogs/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"
#include "services/Events.h"
#include "services/Localisation.h"
#include "services/ShellLaunching.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace {
constexpr quint32 WaitSliceMs = 100;
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
    RunState& state = m_context.state;
    // The stored document asks for the first page as a small bitmap for this one run; the
    // fields keep the user's values.
    const qint16 pageFrom = state.PageFrom;
    const qint16 pageTo = state.PageTo;
    const qint16 usingPageRange = state.UsingPageRange;
    const qint16 extractToBmp = state.ExtractToBMP;
    const qint16 zoomDpi = state.ZoomDpi;
    state.UsingPageRange = 1;
    state.ExtractToBMP = 1;
    state.PageFrom = 0;
    state.PageTo = 0;
    state.ZoomDpi = 20;
    SaveOptions(state, m_context.settings, false);
    state.PageFrom = pageFrom;
    state.PageTo = pageTo;
    state.UsingPageRange = usingPageRange;
    state.ExtractToBMP = extractToBmp;
    state.ZoomDpi = zoomDpi;

    ProcessHandle process = ProcessHandle::None;
    const QString program = u'"' + EngineProgram(m_context.applicationDir) + u'"';
    const QString parameters = PreviewArguments(state);
    const qint32 code =
        LaunchProcess(this, OpenVerb, program, parameters, ShowNormal, process, qint16{-1},
                      ExactEngineArguments(parameters, PreviewArgumentList(state)));
    if (code <= 32)
        return;
    for (;;) {
        const quint32 waited = WaitForSingleObject(process, WaitSliceMs);
        // A handle that names no process has nothing left to wait for.
        if (waited == WaitResults::Object0 || waited == WaitResults::Failed)
            break;
        PumpEvents();
        if (m_skipped)
            break;
    }
    // A skipped engine runs on by itself; letting go of it still reaps it when it ends.
    CloseHandle(process);
    if (m_skipped)
        return;
    m_timer1->setInterval(LingerMs);
    m_timer1->start();
    // The dialog lingers for a moment; sleeping until the next event spares the processor.
    while (m_timer1->isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}
