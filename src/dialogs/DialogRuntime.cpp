#include "dialogs/DialogRuntime.h"

#include <QEventLoop>
#include <QWindow>

DialogRuntime::~DialogRuntime()
{
    const QList<Form*> left = m_loaded;
    m_loaded.clear();
    qDeleteAll(left);
}

bool DialogRuntime::IsLoaded(const Form* form) const
{
    return form && m_loaded.contains(form);
}

void DialogRuntime::Load(Form& form)
{
    // An unloaded form is on its way out; a new load makes a new instance.
    Q_ASSERT(!form.m_retired);
    m_loaded.append(&form);
    const Form::HandlerScope scope(form);
    form.Form_Load();
}

void DialogRuntime::SetActive(Form* form)
{
    if (m_active == form)
        return;
    m_active = form;
    if (form) {
        const Form::HandlerScope scope(*form);
        form->Form_Activate();
    }
}

void DialogRuntime::Show(Form& form)
{
    if (!IsLoaded(&form))
        Load(form);
    form.setWindowModality(Qt::NonModal);
    form.show();
    SetActive(&form);
}

void DialogRuntime::ShowModal(Form& form, Form* owner)
{
    if (!IsLoaded(&form))
        Load(form);
    QPointer<Form> shown(&form);
    QPointer<Form> ownerGuard(owner);

    form.setWindowModality(Qt::ApplicationModal);
    if (owner && owner->windowHandle()) {
        form.winId();
        form.windowHandle()->setTransientParent(owner->windowHandle());
    }
    form.show();
    SetActive(&form);

    // A form that hides itself ends its modal show once its handler returns, even when that
    // handler is itself inside a nested modal show of another form.
    if (shown && IsLoaded(shown) && shown->isVisible()) {
        QEventLoop loop;
        connect(shown.data(), &Form::Hidden, &loop, &QEventLoop::quit);
        connect(shown.data(), &QObject::destroyed, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::DialogExec);
    }
    if (shown)
        shown->setWindowModality(Qt::NonModal);
    if (m_active == shown)
        m_active = nullptr;

    if (ownerGuard && IsLoaded(ownerGuard) && ownerGuard->isVisible())
        SetActive(ownerGuard);
}

void DialogRuntime::Hide(Form& form)
{
    form.hide();
    if (m_active == &form)
        m_active = nullptr;
}

void DialogRuntime::Unload(Form& form)
{
    if (!IsLoaded(&form))
        return;
    {
        const Form::HandlerScope scope(form);
        form.Form_QueryUnload();
        if (!IsLoaded(&form))
            return;  // the query itself unloaded it
        form.Form_Unload();
        m_loaded.removeOne(&form);
        if (m_active == &form)
            m_active = nullptr;
        form.hide();
        form.m_retired = true;
    }
    if (m_loaded.isEmpty())
        emit AllUnloaded();
}

void DialogRuntime::RequestHelp(Form& form)
{
    if (m_helpHandler)
        m_helpHandler(form);
}
