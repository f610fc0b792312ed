#pragma once

// The base of every dialog of the program. A form is made once on first use and runs
// Form_Load then; Form_Activate comes at its first show and whenever it becomes the active
// dialog again after a modal dialog it owns has closed; Form_QueryUnload and Form_Unload come
// when it is unloaded. Sizes and positions are in twips, converted with the form's own scale.
// A form that is unloaded while one of its handlers runs (a handler that waits pumps events, so
// a close request can arrive inside it) is deleted only once the last of them has returned.

#include <QDialog>

class DialogRuntime;
class QAbstractButton;

class Form : public QDialog
{
    Q_OBJECT

public:
    explicit Form(DialogRuntime& runtime);
    ~Form() override;

    DialogRuntime& Runtime() const { return m_runtime; }

    // The whole window's position and size in twips.
    float Left() const;
    float Top() const;
    float Width() const;
    float Height() const;
    void Move(float left, float top);

    // Pixels to twips and back with this form's scale.
    float ScaleXToTwips(float pixels) const;
    float ScaleYToTwips(float pixels) const;
    int TwipsToPixelsX(float twips) const;
    int TwipsToPixelsY(float twips) const;
    // The height of the screen the form is on, in twips.
    float ScreenHeight() const;

    // A fixed client area of the given size in twips.
    void SetFixedClientSizeTwips(float width, float height);
    // Places a child control at twip coordinates relative to its parent.
    void PlaceTwips(QWidget& control, float left, float top, float width, float height) const;

    // The button that the Escape key clicks; without one Escape does nothing.
    void SetCancelButton(QAbstractButton* button) { m_cancelButton = button; }

    // The help topic of the dialog ("::/page.htm#anchor"); empty for the help's start page.
    virtual QString HelpTopic() const { return {}; }

    // Keeps the form alive while one of its handlers runs; the runtime deletes an unloaded form
    // only when none is left on the stack.
    class HandlerScope final
    {
    public:
        explicit HandlerScope(Form& form);
        ~HandlerScope();
        HandlerScope(const HandlerScope&) = delete;
        HandlerScope& operator=(const HandlerScope&) = delete;

    private:
        Form& m_form;
    };

signals:
    // The form was hidden or unloaded: a modal show of it ends.
    void Hidden();

protected:
    virtual void Form_Load() {}
    virtual void Form_Activate() {}
    virtual void Form_QueryUnload() {}
    virtual void Form_Unload() {}
    // The window's close box or the window manager asks the form to close. The default unloads
    // it; a form that is busy with work that can't be abandoned says otherwise.
    virtual void Form_CloseRequest();

    // A control's event handler bound to this form, so that the form outlives the handler even
    // when the handler unloads it: connect(button, &QPushButton::clicked, this, Handler(...)).
    template <class Derived, class... Args> auto Handler(void (Derived::*method)(Args...))
    {
        return [this, method](Args... args) {
            const HandlerScope scope(*this);
            (static_cast<Derived*>(this)->*method)(args...);
        };
    }

    void keyPressEvent(QKeyEvent* event) override;

    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void reject() override;

private:
    friend class DialogRuntime;

    DialogRuntime& m_runtime;
    QAbstractButton* m_cancelButton = nullptr;
    int m_handlerDepth = 0;
    bool m_retired = false;  // unloaded; deleted when no handler of it is left on the stack
};
