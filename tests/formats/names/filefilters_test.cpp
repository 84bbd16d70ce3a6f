#include "formats/names/filefilters.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace tirn {
namespace {

TEST(FileFilters, AreOneListWithoutEmptyParts)
{
    const QStringList filters = stackFileFilter().split(";;");
    EXPECT_EQ(
        filters.first(),
        QString("All supported formats (*.lei *.lsm *.oif *.pic *.r3d *.stk *.tif *.tiff *.txt *.vff)"));
    EXPECT_EQ(filters.mid(1, 4),
              QStringList({"Biorad (*.pic)", "Deltavision (*.r3d)", "Dicom (*.dcm)", "Leica (*.lei *.txt)"}));
    EXPECT_EQ(filters.size(), 11);
    EXPECT_FALSE(filters.contains(QString()));
}

TEST(FileFilters, NameTifTwiceForMultiPageTiff)
{
    EXPECT_EQ(stackFileFilter().split("MTiff")[1].split(";;")[0].count("*.tif)") +
                  stackFileFilter().split("MTiff")[1].split(";;")[0].count("*.tif "),
              2);
}

TEST(FileFilters, AreTheseTexts)
{
    EXPECT_EQ(stackFileFilter(),
              "All supported formats (*.lei *.lsm *.oif *.pic *.r3d *.stk *.tif *.tiff *.txt *.vff);;"
              "Biorad (*.pic);;Deltavision (*.r3d);;Dicom (*.dcm);;Leica (*.lei *.txt);;Metamorph (*.stk);;"
              "MTiff (*.tif *.tiff *.tif);;Olympus (*.oif);;VFF (*.vff);;Zeiss (*.lsm);;All files (*)");
    EXPECT_EQ(channelFileFilter(),
              "All known formats (*.pic *.tif);; Biorad (*.pic);;Perkin Elmer (*.tif);;All File (*.*)");
}

TEST(FileFilters, OfAnExportNameTheTwoFormatsThatCanBeWritten)
{
    EXPECT_EQ(exportFileFilter(), "Biorad (*.pic);; MTiff (*.tif *.tiff)");
}

} // namespace
} // namespace tirn
