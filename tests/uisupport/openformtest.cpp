#include "uisupport/openformtest.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "ui/widgets/filechooser.h"

namespace tirn::test {

namespace {

SeenBox describe(const QMessageBox& box)
{
    return {box.icon(), box.windowTitle(), box.text(), box.isModal()};
}

} // namespace

void PrintTo(const SeenBox& box, std::ostream* stream)
{
    *stream << "icon " << box.icon << ", " << qPrintable(box.title) << ": " << qPrintable(box.text);
}

OpenFormTest::OpenFormTest() { card.hasTexture3D = true; }

FormServices OpenFormTest::services()
{
    return {.model = app().model(),
            .loads = *this,
            .stacks = app().stacks(),
            .palettes = app().stacks(),
            .jobs = app().jobs(),
            .pictures = app().pictures(),
            .window = app().windows(),
            .probes = probes,
            .settings = settings,
            .card = card,
            .storePreferences = {},
            .form = {},
            .help = {}};
}

void OpenFormTest::waitForProbes()
{
    EXPECT_TRUE(QTest::qWaitFor([this] { return !probes.isBusy(); }));
}

bool OpenFormTest::startLoad(LoadDescription load)
{
    if (isBusy)
        return false;
    m_started.push_back(std::move(load));
    return true;
}

SeenBox OpenFormTest::seenBox()
{
    for (QWidget* top : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(top);
        if (box == nullptr || !box->isVisible())
            continue;
        const SeenBox seen = describe(*box);
        QTest::keyClick(box, Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return seen;
    }
    return {};
}

void OpenFormTest::answer(const QString& button)
{
    m_answers = std::make_unique<ModalAnswers>();
    m_answers->add([this, button](QDialog& dialog) {
        auto* box = qobject_cast<QMessageBox*>(&dialog);
        ASSERT_NE(box, nullptr);
        question = describe(*box);
        for (QAbstractButton* each : box->buttons()) {
            if (each->text() == button) {
                QTest::mouseClick(each, Qt::LeftButton);
                return;
            }
        }
        box->reject();
    });
}

void OpenFormTest::click(QWidget& form, const QString& button)
{
    auto& found = find<QAbstractButton>(form, button);
    // A box answers where its mark and its text are.
    const int inside = found.height() / 2;
    QTest::mouseClick(&found, Qt::LeftButton, {}, QPoint(inside, inside));
    waitForProbes();
}

void OpenFormTest::typeName(QWidget& form, const QString& chooser, const QString& name)
{
    auto& line = find<QLineEdit>(find<FileChooser>(form, chooser), "txtFileName");
    line.selectAll();
    QTest::keyClick(&line, Qt::Key_Delete);
    QTest::keyClicks(&line, name);
    QTest::keyClick(&line, Qt::Key_Return);
    waitForProbes();
}

QString OpenFormTest::nameIn(const QWidget& form, const QString& chooser)
{
    return find<FileChooser>(form, chooser).fileName();
}

QString OpenFormTest::label(const QWidget& form, const QString& name)
{
    return find<QLabel>(form, name).text();
}

} // namespace tirn::test
