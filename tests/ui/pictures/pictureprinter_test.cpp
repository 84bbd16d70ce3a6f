#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include "support/picfile.h"
#include "ui/pictures/pictureprinter.h"
#include "uisupport/apptest.h"

namespace tirn {
namespace {

/// Prints a red picture of 40 x 10 pixels to a PDF file and looks at the page as pixels.
class Printing : public test::AppTest, public ::testing::WithParamInterface<QPageLayout::Orientation>
{
protected:
    QImage page(QPageLayout::Orientation orientation)
    {
        QImage picture(40, 10, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path("page.pdf"));
        printer.setPageSize(QPageSize(QPageSize::A4));
        printer.setPageOrientation(orientation);
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
};

TEST_P(Printing, FillsASquareAcrossThePage)
{
    const QImage seen = page(GetParam());
    const int shorter = std::min(seen.width(), seen.height());
    const int longer = std::max(seen.width(), seen.height());
    const int top = (longer - shorter) / 2;
    // Pictures in a PDF file are compressed with loss.
    const auto isRed = [](const QColor& color) {
        return color.red() > 250 && color.green() < 5 && color.blue() < 5;
    };
    const QColor white(255, 255, 255);
    // On a broad page the square starts below its top as on a high one, and leaves it at the bottom.
    EXPECT_TRUE(isRed(seen.pixelColor(3, top + 4)));
    EXPECT_TRUE(isRed(seen.pixelColor(shorter - 4, std::min(top + shorter, seen.height()) - 4)));
    EXPECT_EQ(seen.pixelColor(3, top - 4), white);
    if (GetParam() == QPageLayout::Portrait)
        EXPECT_EQ(seen.pixelColor(3, top + shorter + 4), white);
    else
        EXPECT_EQ(seen.pixelColor(shorter + 4, top + 4), white);
    EXPECT_EQ(log.lines().filter(QRegularExpression("^width [0-9]+, height [0-9]+$")).size(), 1);
}

TEST_P(Printing, NoPictureIsNotPrinted)
{
    QPrinter printer(QPrinter::HighResolution);
    EXPECT_FALSE(printPicture({}, printer));
}

INSTANTIATE_TEST_SUITE_P(Pages, Printing, ::testing::Values(QPageLayout::Portrait, QPageLayout::Landscape));

} // namespace
} // namespace tirn
