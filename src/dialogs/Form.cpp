#include "dialogs/Form.h"

#include "dialogs/DialogRuntime.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHideEvent>
#include <QKeyEvent>
#include <QScreen>

#include <cmath>

namespace {
constexpr float TwipsPerInch = 1440.0F;
}

Form::Form(DialogRuntime& runtime) : QDialog(nullptr), m_runtime(runtime)
{
    // Dialogs are single instances that the runtime deletes after their unload.
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    // Every dialog is defined in Tahoma at 8.25 points; the Japanese overlay replaces it on
    // the controls when a dialog loads.
    QFont definitionFont(QStringLiteral("Tahoma"));
    definitionFont.setPointSizeF(8.25);
    setFont(definitionFont);
}

Form::~Form() = default;

float Form::ScaleXToTwips(float pixels) const
{
    return pixels * TwipsPerInch / static_cast<float>(logicalDpiX());
}

float Form::ScaleYToTwips(float pixels) const
{
    return pixels * TwipsPerInch / static_cast<float>(logicalDpiY());
}

int Form::TwipsToPixelsX(float twips) const
{
    return static_cast<int>(std::lround(twips * static_cast<float>(logicalDpiX()) / TwipsPerInch));
}

int Form::TwipsToPixelsY(float twips) const
{
    return static_cast<int>(std::lround(twips * static_cast<float>(logicalDpiY()) / TwipsPerInch));
}

float Form::Left() const
{
    return ScaleXToTwips(static_cast<float>(frameGeometry().x()));
}

float Form::Top() const
{
    return ScaleYToTwips(static_cast<float>(frameGeometry().y()));
}

float Form::Width() const
{
    return ScaleXToTwips(static_cast<float>(frameGeometry().width()));
}

float Form::Height() const
{
    return ScaleYToTwips(static_cast<float>(frameGeometry().height()));
}

void Form::Move(float left, float top)
{
    move(TwipsToPixelsX(left), TwipsToPixelsY(top));
}

float Form::ScreenHeight() const
{
    const QScreen* s = screen() ? screen() : QGuiApplication::primaryScreen();
    return s ? ScaleYToTwips(static_cast<float>(s->geometry().height())) : 0.0F;
}

void Form::SetFixedClientSizeTwips(float width, float height)
{
    setFixedSize(TwipsToPixelsX(width), TwipsToPixelsY(height));
}

void Form::PlaceTwips(QWidget& control, float left, float top, float width, float height) const
{
    control.setGeometry(TwipsToPixelsX(left), TwipsToPixelsY(top), TwipsToPixelsX(width),
                        TwipsToPixelsY(height));
}

Form::HandlerScope::HandlerScope(Form& form) : m_form(form)
{
    ++m_form.m_handlerDepth;
}

Form::HandlerScope::~HandlerScope()
{
    if (--m_form.m_handlerDepth == 0 && m_form.m_retired)
        m_form.deleteLater();
}

void Form::closeEvent(QCloseEvent* event)
{
    // The window itself never closes: the form decides what a close request means.
    event->ignore();
    const HandlerScope scope(*this);
    Form_CloseRequest();
}

void Form::Form_CloseRequest()
{
    m_runtime.Unload(*this);
}

void Form::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1 && event->modifiers() == Qt::NoModifier) {
        const HandlerScope scope(*this);
        m_runtime.RequestHelp(*this);
        return;
    }
    QDialog::keyPressEvent(event);
}

void Form::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    if (!event->spontaneous())
        emit Hidden();
}

void Form::reject()
{
    if (m_cancelButton && m_cancelButton->isEnabled() && m_cancelButton->isVisible())
        m_cancelButton->click();
}
