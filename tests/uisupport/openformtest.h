#pragma once

#include <ostream>
#include <stdexcept>

#include <QMessageBox>

#include "ui/toolform.h"
#include "uisupport/apptest.h"
#include "uisupport/modalanswers.h"
#include "uisupport/probegate.h"

namespace tirn::test {

/// A message box that was on the screen.
struct SeenBox
{
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    bool isModal = false;

    bool operator==(const SeenBox&) const = default;
};

void PrintTo(const SeenBox& box, std::ostream* stream);

/// A form that opens stacks, with loads that are only recorded.
class OpenFormTest : public AppTest, public LoadService
{
protected:
    OpenFormTest();

    FormServices services();
    bool startLoad(LoadDescription load) override;
    void chooseStack() override {}
    void loadPalettes(const QStringList& /*names*/) override {}
    /// The box on the screen, which is then closed; without a title when there is none.
    SeenBox seenBox();
    /// Answers the next question with the button of this text, or closes it where there is none; the question
    /// stands in `question` then.
    void answer(const QString& button);

    template <class Widget>
    static Widget& find(const QWidget& form, const QString& name)
    {
        Widget* widget = form.findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(name.toStdString());
        return *widget;
    }
    /// Until all that forms ask about files is answered.
    void waitForProbes();
    void click(QWidget& form, const QString& button);
    /// Types a name into a chooser, to its end.
    void typeName(QWidget& form, const QString& chooser, const QString& name);
    static QString nameIn(const QWidget& form, const QString& chooser);
    static QString label(const QWidget& form, const QString& name);

    /// The load that was started last, and how many were.
    const LoadDescription& loaded() const { return m_started.back(); }
    std::size_t loads() const { return m_started.size(); }

    Settings settings;
    GlCapabilities card;
    ProbeGate gate;
    Probes probes{gate.reader(readStackHeader)};
    /// Another load is under way.
    bool isBusy = false;
    SeenBox question;

private:
    std::unique_ptr<ModalAnswers> m_answers;
    std::vector<LoadDescription> m_started;
};

} // namespace tirn::test
