#include "ui/main/aboutform.h"

#include <QLabel>
#include <QTest>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

using About = test::AppTest;

TEST_F(About, SaysWhatTheProgramIsAndWhatDraws)
{
    app().mainForm().action("helpAboutAction")->trigger();
    auto* form = app().forms().form(FormId::About);
    EXPECT_EQ(form->windowTitle(), "About Tirn");
    EXPECT_EQ(form->objectName(), "About");
    QString text;
    for (const QLabel* label : form->findChildren<QLabel*>())
        text += label->text() + "\n";
    for (const QString& part :
         {QString("Tirn "), QString("microscope"), QString("BSD 3-Clause License."), app().card().renderer})
        EXPECT_TRUE(text.contains(part)) << part.toStdString();
    QTest::keyClick(form, Qt::Key_Return);
    EXPECT_FALSE(form->isVisible());
}

} // namespace
} // namespace tirn
