#include <gtest/gtest.h>

#include "formats/imageformats.h"
#include "formats/imageio.h"
#include "image/imagefile.h"
#include "support/logcapture.h"
#include "support/lsmfile.h"
#include "support/picfile.h"
#include "support/stacks.h"
#include "support/stkfile.h"
#include "support/tifffile.h"

namespace tirn {
namespace {

TEST(ProbeTable, AsksInItsOrder)
{
    std::vector<ImageType> order;
    for (const ImageFormat& format : imageFormats()) {
        if (format.probe != nullptr)
            order.push_back(format.type);
    }
    EXPECT_EQ(order, (std::vector{ImageType::BioRad, ImageType::Zeiss, ImageType::MetaMorph,
                                  ImageType::MultiPageTiff, ImageType::TiffSeries, ImageType::Olympus,
                                  ImageType::Leica, ImageType::Vff, ImageType::DeltaVision}));
}

TEST(ProbeTable, EachGuessIsLogged)
{
    const std::vector<std::pair<ImageType, QString>> guesses = {
        {ImageType::BioRad, "I think it is a Biorad"},
        {ImageType::DeltaVision, "I think it is a DeltaVision"},
        {ImageType::Leica, "I think it is a Leica"},
        {ImageType::MetaMorph, "I think it is a Metamorph"},
        {ImageType::MultiPageTiff, "I think it is a MTiff"},
        {ImageType::Olympus, "I think it is a Olympus"},
        {ImageType::TiffSeries, "I think this is a series of Tiffs"},
        {ImageType::Vff, "I think it is a vff"},
        {ImageType::Zeiss, "I think it is a Zeiss"}};
    for (const auto& [type, text] : guesses)
        EXPECT_EQ(QString(imageFormat(type).guessText), text);
}

TEST(ProbeTable, TypesWithoutAClassHaveNoReader)
{
    for (const ImageType type : {ImageType::Dicom, ImageType::PerkinElmer, ImageType::Unknown})
        EXPECT_EQ(imageFormat(type).create, nullptr);
}

TEST(ProbeTable, WhatCanBeAskedForIsWritten)
{
    QStringList words;
    for (const ImageFormat& format : imageFormats()) {
        if (format.word == nullptr)
            continue;
        words.append(format.word);
        EXPECT_NE(format.write, nullptr) << format.word;
    }
    EXPECT_EQ(words, (QStringList{"pic", "stk", "mtiff", "tiff", "raw"}));
}

TEST(ProbeTable, ARowSaysWhichFilesAreWritten)
{
    ImageAttributes stack;
    stack.channels = 2;
    stack.z = 3;
    const auto files = [&stack](ImageType type, const QString& name) {
        return imageFormat(type).filesOf(name, stack);
    };
    EXPECT_EQ(files(ImageType::BioRad, "a"), (QStringList{"a_c00.pic", "a_c01.pic"}));
    EXPECT_EQ(files(ImageType::BioRad, "a.PIC"), (QStringList{"a_c00.pic", "a_c01.pic"}));
    EXPECT_EQ(files(ImageType::TiffSeries, "a.tif"),
              (QStringList{"a_z0000.tif", "a_z0001.tif", "a_z0002.tif"}));
    EXPECT_EQ(files(ImageType::MetaMorph, "a"), QStringList{"a"}) << "no ending is added";
    stack.channels = stack.z = 1;
    EXPECT_EQ(files(ImageType::BioRad, "a"), QStringList{"a.pic"});
    EXPECT_EQ(files(ImageType::BioRad, "A.PIC"), QStringList{"A.PIC"});
    EXPECT_EQ(files(ImageType::TiffSeries, "a.tiff"), QStringList{"a.tiff.tif"});
}

TEST(ProbeTable, EndingsChooseAFormatForExport)
{
    for (const auto& [name, type] :
         {std::pair{"a.pic", ImageType::BioRad}, std::pair{"a.PIC", ImageType::BioRad},
          std::pair{"a.tif", ImageType::MultiPageTiff}, std::pair{"a.TIFF", ImageType::MultiPageTiff},
          std::pair{"a.xyz", ImageType::MultiPageTiff}, std::pair{"pic", ImageType::MultiPageTiff}})
        EXPECT_EQ(exportFormat(name).type, type) << name;
}

TEST(ProbeTable, WhatIsOpenedHasAPage)
{
    for (const ImageFormat& format : imageFormats())
        EXPECT_EQ(format.page != OpenPage::None, format.create != nullptr) << format.name;
}

TEST(ProbeTable, OverlapsGoToTheSpecialFormat)
{
    const QTemporaryDir directory;
    const auto typeOf = [&](const QString& name, const QByteArray& bytes) {
        return ImageIO::probeType(test::saveBytes(directory.filePath(name), bytes));
    };
    const QByteArray lsm = test::LsmFile().bytes();
    EXPECT_EQ(typeOf("a.lsm", lsm), ImageType::Zeiss);
    EXPECT_EQ(typeOf("a.tif", lsm), ImageType::MultiPageTiff);
    const QByteArray stk = test::StkFile().bytes();
    EXPECT_EQ(typeOf("a.stk", stk), ImageType::MetaMorph);
    EXPECT_EQ(typeOf("a.lsm", stk), ImageType::Zeiss) << "the name comes first";
    EXPECT_EQ(typeOf("b.tif", stk), ImageType::TiffSeries);
    const QByteArray pages = test::TiffFile{{test::plainPage(4, 3, 1), test::plainPage(4, 3, 1)}}.bytes();
    EXPECT_EQ(typeOf("c.tif", pages), ImageType::MultiPageTiff);
    EXPECT_EQ(typeOf("c.anything", pages), ImageType::MultiPageTiff);
}

TEST(ProbeTable, NoFileAndNoFormatAreUnknown)
{
    const QTemporaryDir directory;
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("II"), QByteArray(4096, '\0'), QByteArray(70000, 'x')})
        EXPECT_EQ(ImageIO::probeType(test::saveBytes(directory.filePath("a"), bytes)), ImageType::Unknown);
    EXPECT_EQ(ImageIO::probeType(directory.path()), ImageType::Unknown);
    EXPECT_EQ(ImageIO::probeType("/no/such/file"), ImageType::Unknown);
    const ImageFile file({directory.filePath("a")});
    EXPECT_FALSE(file.hasReader());
    EXPECT_EQ(file.errorList(), QStringList{"Could not allocate ImageIO object"});
}

TEST(ProbeTable, TypesWithoutAWriterFallThroughToTheRawOne)
{
    const QTemporaryDir directory;
    for (const ImageType type :
         {ImageType::DeltaVision, ImageType::Leica, ImageType::Vff, ImageType::Unknown}) {
        const auto stack = test::constantStack({3, 2, 2, 1, 8}, 9);
        ASSERT_TRUE(stack->write({directory.filePath("a.raw")}, type));
        EXPECT_EQ(test::fileContent(directory.filePath("a.raw")), QByteArray(12, '\x09'));
    }
    const auto stack = test::constantStack({3, 2, 2, 1, 8}, 9);
    for (const auto& [type, text] : {std::pair{ImageType::Dicom, "DICOM not supported"},
                                     std::pair{ImageType::PerkinElmer, "Perkinelmer not supported"},
                                     std::pair{ImageType::Olympus, "Olympus not supported"}}) {
        EXPECT_FALSE(stack->write({directory.filePath("b")}, type));
        EXPECT_EQ(stack->writeErrors(), QStringList{text});
    }
}

} // namespace
} // namespace tirn
