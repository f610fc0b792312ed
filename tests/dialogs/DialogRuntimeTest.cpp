// The dialogs' runtime keeps a form alive while one of its handlers runs, however the form gets
// unloaded meanwhile, and deletes it once the handler has returned.

#include "dialogs/DialogRuntime.h"
#include "support/ModalDriver.h"

#include <QPointer>
#include <QPushButton>

#include <gtest/gtest.h>

#include <functional>

namespace {

// A form whose activation or button runs `during`, then pumps every pending event (deferred
// deletes among them) and notes in `alive` whether the form still exists.
class BusyForm final : public Form
{
public:
    BusyForm(DialogRuntime& runtime, std::function<void(BusyForm&)> during, bool fromButton,
             bool& alive)
        : Form(runtime), m_during(std::move(during)), m_fromButton(fromButton), m_alive(alive)
    {
        connect(button, &QPushButton::clicked, this, Handler(&BusyForm::Work));
    }
    QPushButton* const button = new QPushButton(this);

protected:
    void Form_Activate() override
    {
        if (!m_fromButton)
            Work();
    }

private:
    void Work()
    {
        bool& alive = m_alive;
        const QPointer<BusyForm> self(this);
        m_during(*this);
        ProcessPendingEvents();
        alive = !self.isNull();
    }

    std::function<void(BusyForm&)> m_during;
    bool m_fromButton;
    bool& m_alive;
};

TEST(DialogRuntimeTest, FormUnloadedInsideItsOwnHandlerOutlivesTheHandler)
{
    const auto close = [](BusyForm& form) { form.close(); };
    const auto unload = [](BusyForm& form) { form.Runtime().Unload(form); };
    const std::tuple<const char*, std::function<void(BusyForm&)>, bool> rows[] = {
        {"close request during activation", close, false},
        {"unload during activation", unload, false},
        {"unload in a button handler", unload, true}};
    for (const auto& [how, during, fromButton] : rows) {
        DialogRuntime runtime;
        QPointer<BusyForm> form;
        bool alive = false;
        runtime.Instance(form, during, fromButton, alive);
        runtime.Show(*form);
        if (fromButton)
            form->button->click();
        EXPECT_TRUE(alive) << how;
        EXPECT_FALSE(runtime.IsLoaded(form)) << how;
        ProcessPendingEvents();
        EXPECT_TRUE(form.isNull()) << how << ": deleted once the handler returned";
    }
}

}  // namespace
