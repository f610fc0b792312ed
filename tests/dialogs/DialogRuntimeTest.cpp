// The dialogs' runtime keeps a form alive while one of its handlers runs, however the form gets
// unloaded meanwhile, and deletes it once the handler has returned.

#include "dialogs/DialogRuntime.h"
#include "support/ModalDriver.h"

#include <QCoreApplication>
#include <QPointer>
#include <QPushButton>

#include <gtest/gtest.h>

#include <functional>

namespace {

// A form whose activation or button runs `during`, then pumps every pending event (deferred
// deletes among them) and records whether the form still exists.
class BusyForm final : public Form
{
public:
    BusyForm(DialogRuntime& runtime, std::function<void(BusyForm&)> during)
        : Form(runtime), m_during(std::move(during))
    {
        m_button = new QPushButton(this);
        connect(m_button, &QPushButton::clicked, this, Handler(&BusyForm::Work));
    }
    QPushButton& Button() const { return *m_button; }
    bool* aliveAfterPumping = nullptr;
    bool activateWorks = true;

protected:
    void Form_Activate() override
    {
        if (activateWorks)
            Work();
    }

private:
    void Work()
    {
        bool* alive = aliveAfterPumping;
        const QPointer<BusyForm> self(this);
        m_during(*this);
        ProcessPendingEvents();
        *alive = !self.isNull();
    }

    std::function<void(BusyForm&)> m_during;
    QPushButton* m_button = nullptr;
};

TEST(DialogRuntimeTest, FormUnloadedInsideItsOwnHandlerOutlivesTheHandler)
{
    struct Row
    {
        const char* how;
        bool fromButton;
        std::function<void(BusyForm&)> unload;
    };
    const Row rows[] = {
        {"close request during activation", false, [](BusyForm& f) { f.close(); }},
        {"unload during activation", false, [](BusyForm& f) { f.Runtime().Unload(f); }},
        {"unload in a button handler", true, [](BusyForm& f) { f.Runtime().Unload(f); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.how);
        DialogRuntime runtime;
        QPointer<BusyForm> form;
        bool alive = false;
        runtime.Instance(form, row.unload);
        form->aliveAfterPumping = &alive;
        form->activateWorks = !row.fromButton;
        runtime.Show(*form);
        if (row.fromButton)
            form->Button().click();
        EXPECT_TRUE(alive);
        EXPECT_FALSE(runtime.IsLoaded(form));
        ProcessPendingEvents();
        EXPECT_TRUE(form.isNull()) << "deleted once the handler returned";
    }
}

}  // namespace
