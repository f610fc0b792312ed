#pragma once

// The dialogs' runtime: the collection of loaded forms in load order, modal and modeless
// shows with an owner, hiding and unloading, and the activation of forms. The program runs
// until the last form is unloaded.

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

#include "dialogs/Form.h"

class DialogRuntime final : public QObject
{
    Q_OBJECT

public:
    DialogRuntime() = default;
    ~DialogRuntime() override;

    // The single instance kept in `slot`, made and loaded on first use or after an unload.
    template <class F, class... Args> F& Instance(QPointer<F>& slot, Args&&... args)
    {
        if (!slot || !IsLoaded(slot.data())) {
            slot = new F(*this, std::forward<Args>(args)...);
            Load(*slot);
        }
        return *slot;
    }

    bool IsLoaded(const Form* form) const;
    // Loaded forms in the order they were loaded.
    const QList<Form*>& LoadedForms() const { return m_loaded; }

    // Shows the form without making it modal, and activates it.
    void Show(Form& form);
    // Shows the form modally over `owner` and returns when it is hidden or unloaded; the owner
    // is then activated again if it is still shown.
    void ShowModal(Form& form, Form* owner);
    void Hide(Form& form);
    // Runs Form_QueryUnload and Form_Unload, hides the form and removes it from the
    // collection. The object itself goes once no handler of it is running, so a handler may
    // unload its own form, and a close request inside a waiting handler can't pull the form
    // from under it.
    void Unload(Form& form);

    // What F1 in a dialog does: the program shows the dialog's help topic.
    void SetHelpHandler(std::function<void(Form&)> handler) { m_helpHandler = std::move(handler); }
    void RequestHelp(Form& form);

signals:
    void AllUnloaded();

private:
    void Load(Form& form);
    void SetActive(Form* form);

    QList<Form*> m_loaded;
    QPointer<Form> m_active;
    std::function<void(Form&)> m_helpHandler;
};
