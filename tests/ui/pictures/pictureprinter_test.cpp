#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "ui/pictures/pictureprinter.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

/// Prints red pictures to a PDF file and looks at the page as pixels.
class Printing : public test::AppTest, public ::testing::WithParamInterface<QPageLayout::Orientation>
{
protected:
    QImage page(QSize size)
    {
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path("page.pdf"));
        printer.setPageSize(QPageSize(QPageSize::A4));
        printer.setPageOrientation(GetParam());
        printer.setPageMargins(QMarginsF());
        printer.setFullPage(true);
        EXPECT_TRUE(printPicture(picture, printer));
        EXPECT_TRUE(test::fileContent(path("page.pdf")).startsWith("%PDF-"));
        QProcess process;
        process.start("pdftoppm", {"-r", "20", "-png", "-singlefile", path("page.pdf"), path("page")});
        process.waitForFinished(-1);
        EXPECT_EQ(process.exitCode(), 0);
        return QImage(path("page.png"));
    }
    /// The box around what is red; pictures in a PDF file are compressed with loss.
    static QRect redPart(const QImage& seen)
    {
        QRect box;
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                const QColor color = seen.pixelColor(x, y);
                if (color.red() > 250 && color.green() < 5 && color.blue() < 5)
                    box |= QRect(x, y, 1, 1);
            }
        }
        return box;
    }
};

TEST_P(Printing, KeepsTheProportionsInTheMiddleOfThePage)
{
    // A4 at 20 dots an inch, by hand: 8.27 x 11.69 inches are 165 x 234 dots.
    const bool high = GetParam() == QPageLayout::Portrait;
    const QSize paper = high ? QSize(165, 234) : QSize(234, 165);
    struct Case
    {
        QSize picture;
        QSize printed;
    };
    const Case cases[] = {{{40, 10}, high ? QSize(165, 41) : QSize(234, 58)},
                          {{10, 40}, high ? QSize(58, 234) : QSize(41, 165)},
                          {{20, 20}, QSize(165, 165)}};
    for (const Case& each : cases) {
        const QImage seen = page(each.picture);
        EXPECT_NEAR(seen.width(), paper.width(), 1);
        EXPECT_NEAR(seen.height(), paper.height(), 1);
        const QRect red = redPart(seen);
        EXPECT_NEAR(red.width(), each.printed.width(), 3);
        EXPECT_NEAR(red.height(), each.printed.height(), 3);
        EXPECT_NEAR(red.center().x(), paper.width() / 2, 2);
        EXPECT_NEAR(red.center().y(), paper.height() / 2, 2);
    }
    EXPECT_EQ(log.lines().filter(QRegularExpression("^width [0-9]+, height [0-9]+$")).size(), 3);
}

TEST_P(Printing, NoPictureIsNotPrinted)
{
    QPrinter printer(QPrinter::HighResolution);
    EXPECT_FALSE(printPicture({}, printer));
}

INSTANTIATE_TEST_SUITE_P(Pages, Printing, ::testing::Values(QPageLayout::Portrait, QPageLayout::Landscape));

} // namespace
} // namespace tirn
