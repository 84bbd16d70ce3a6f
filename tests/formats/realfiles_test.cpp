// Files that nobody here made, against what other programs read from them.

#include <cmath>

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include "image/imagefile.h"
#include "support/picfile.h"
#include "support/stacks.h"

namespace tirn {
namespace {

QJsonArray allFacts()
{
    return QJsonDocument::fromJson(test::fileContent(test::testData("facts.json"))).array();
}

QStringList filesOf(const QJsonObject& facts)
{
    QStringList names;
    for (const QJsonValue& name : facts["files"].toArray())
        names.append(test::testData(name.toString()));
    return names;
}

class RealFile : public testing::TestWithParam<int>
{
protected:
    QJsonObject facts() const { return allFacts().at(GetParam()).toObject(); }
    int number(const char* key) const { return facts()[QLatin1String(key)].toInt(); }

    void expectAttributes(const ImageAttributes& a) const
    {
        EXPECT_EQ(static_cast<int>(a.type), number("type"));
        EXPECT_EQ(std::vector({a.fileX, a.fileY, a.fileZ, a.channels, a.bitDepth}),
                  std::vector({number("x"), number("y"), number("z"), number("channels"), number("bits")}));
        if (facts().contains("maxValue")) {
            EXPECT_EQ(a.maxValue, number("maxValue"));
        }
        const std::pair<const char*, double> sizes[] = {{"dimX", a.dimX}, {"dimY", a.dimY}, {"dimZ", a.dimZ}};
        for (const auto& [key, value] : sizes) {
            if (facts().contains(QLatin1String(key))) {
                EXPECT_NEAR(value, facts()[QLatin1String(key)].toDouble(), 1e-6) << key;
            }
        }
    }

    void expectVoxels(ImageFile& file) const
    {
        for (const QJsonValue& voxel : facts()["voxels"].toArray()) {
            const QJsonArray at = voxel.toArray();
            EXPECT_EQ(test::sample(file, at[0].toInt(), at[1].toInt(), at[2].toInt(), at[3].toInt()),
                      at[4].toInt());
        }
        EXPECT_EQ(file.stats(0).min, number("min"));
        EXPECT_EQ(file.stats(0).max, number("max"));
        EXPECT_NEAR(file.stats(0).mean, facts()["mean"].toDouble(), 1e-6);
    }
};

// The layer of an Olympus set that is not read stands as zeros in the facts, which say so ("emptyLastLayer").
TEST_P(RealFile, HoldsWhatOtherProgramsRead)
{
    ImageFile file(filesOf(facts()));
    if (facts().contains("error")) {
        EXPECT_EQ(static_cast<int>(file.attributes().type), number("type"));
        EXPECT_FALSE(file.attributes().type != ImageType::Unknown && file.read());
        // Some files are refused without a text.
        const QString text = facts()["error"].toString();
        EXPECT_EQ(file.errorList(), text.isEmpty() ? QStringList() : QStringList{text});
        return;
    }
    expectAttributes(file.attributes());
    ASSERT_TRUE(file.read()) << file.errorList().join('|').toStdString();
    expectVoxels(file);
}

QString testName(const testing::TestParamInfo<int>& parameter)
{
    QString name = allFacts().at(parameter.param).toObject()["files"].toArray()[0].toString();
    for (QChar& c : name)
        c = c.unicode() < 128 && c.isLetterOrNumber() ? c : QChar('_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, RealFile, testing::Range(0, static_cast<int>(allFacts().size())),
                         [](const auto& parameter) { return testName(parameter).toStdString(); });

TEST(RawFiles, HoldWhatNumPyReads)
{
    ImageFile brain({test::testData("raw/BrainProtonDensity3Slices.raw")}, 0, 181, 217, 3, 1, 8);
    ASSERT_TRUE(brain.read());
    EXPECT_EQ(brain.stats(0).min, 0);
    EXPECT_EQ(brain.stats(0).max, 250);
    EXPECT_NEAR(brain.stats(0).mean, 124.97312252293538, 1e-9);
    EXPECT_EQ(test::sample(brain, 90, 100, 1), 230);
    EXPECT_EQ(test::sample(brain, 60, 30, 2), 64);
    EXPECT_EQ(test::sample(brain, 17, 200, 0), 7);
    ImageFile lung({test::testData("raw/RatLungSlice1.raw")}, 0, 128, 128, 1, 1, 8);
    ASSERT_TRUE(lung.read());
    EXPECT_EQ(lung.stats(0).max, 255);
    EXPECT_NEAR(lung.stats(0).mean, 52.32891845703125, 1e-9);
}

TEST(MalformedFiles, AreRefusedOrReadWithoutHarm)
{
    QDirIterator files(test::testData("malformed"), QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    while (files.hasNext()) {
        const QString name = files.next();
        ImageFile file({name});
        if (file.hasReader() && !file.read()) {
            EXPECT_FALSE(file.isLoaded() && file.attributes().z > 0) << name.toStdString();
        }
        ++count;
    }
    EXPECT_GT(count, 50);
}

} // namespace
} // namespace tirn
