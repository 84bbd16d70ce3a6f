#include "ui/widgets/inkedicon.h"

#include <QApplication>
#include <QImage>
#include <QPalette>
#include <QStyle>

#include "uisupport/apptest.h"

namespace tirn {
namespace {

class InkedIcon : public test::AppTest
{};

TEST_F(InkedIcon, HasTheColoursOfTextOnButtons)
{
    QPalette dark;
    dark.setColor(QPalette::Active, QPalette::ButtonText, QColor(250, 240, 230));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(90, 80, 70));
    const QIcon play = QApplication::style()->standardIcon(QStyle::SP_MediaPlay);
    const QIcon inked = inkedIcon(play, dark);
    const auto colours = [&](QIcon::Mode mode) {
        const QImage image = inked.pixmap(QSize(16, 16), mode).toImage();
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.alpha() < 255)
                    continue;
                ++opaque;
                EXPECT_EQ(pixel, dark.color(mode == QIcon::Normal ? QPalette::Active : QPalette::Disabled,
                                            QPalette::ButtonText));
            }
        }
        return opaque;
    };
    EXPECT_GT(colours(QIcon::Normal), 10);
    EXPECT_GT(colours(QIcon::Disabled), 10);
}

} // namespace
} // namespace tirn
