#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include "depth/curvefile.h"
#include "depth/curvesession.h"
#include "support/logcapture.h"
#include "support/picfile.h"

namespace tirn {
namespace {

using Values = std::vector<double>;

class CurveFile : public testing::Test
{
protected:
    QString path(const QString& name = "curve.mzp") const { return m_directory.filePath(name); }
    /// Reads a text as the curves of a stack with two channels and three slices.
    CurveFileResult read(const QByteArray& text)
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        std::vector<double>* const curves[] = {&m_first, &m_second};
        return readCurveFile(path(), 3, curves);
    }

    QTemporaryDir m_directory;
    Values m_first = {9, 9, 9};
    Values m_second = {8, 8, 8};
};

TEST_F(CurveFile, HoldsABlockForEachChannel)
{
    const CurveBlock blocks[] = {{0, {1, 1.25, 1.0 / 3}}, {1, {4, 1e-7, 1234567}}};
    ASSERT_TRUE(writeCurveFile(path(), blocks));
    EXPECT_EQ(test::fileContent(path()), "Channel: 0\nPlanes: 3\n1\n1.25\n0.333333\n"
                                         "Channel: 1\nPlanes: 3\n4\n1e-07\n1.23457e+06\n");
}

TEST_F(CurveFile, OneBlockForAllHoldsOneCurve)
{
    EXPECT_EQ(curveFileText(std::vector<CurveBlock>{{-1, {2, 3}}}), "Channel: All\nPlanes: 2\n2\n3\n");
}

TEST_F(CurveFile, ReadsBackWhatItWrote)
{
    const CurveBlock blocks[] = {{0, {1, 1.25, 0.5}}, {1, {4, 5, 6}}};
    std::vector<double>* const curves[] = {&m_first, &m_second};
    ASSERT_TRUE(writeCurveFile(path(), blocks));
    const CurveFileResult result = readCurveFile(path(), 3, curves);
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(result.channels, (std::vector<int>{0, 1}));
    EXPECT_FALSE(result.lastWasAll);
    EXPECT_EQ(m_first, blocks[0].curve);
    EXPECT_EQ(m_second, blocks[1].curve);
}

TEST_F(CurveFile, ABlockForAllIsReadIntoChannelZeroOnly)
{
    const test::LogCapture log;
    const CurveFileResult result = read("Channel: All\nPlanes: 3\n1\n2\n3\n");
    EXPECT_TRUE(result.lastWasAll);
    EXPECT_EQ(m_first, (Values{1, 2, 3}));
    EXPECT_EQ(m_second, (Values{8, 8, 8}));
    EXPECT_EQ(log.lines(), (QStringList{"matched channel", "matched plane"}));
}

TEST_F(CurveFile, StrayLinesAndOtherCaseAreSkipped)
{
    read("curves of\nchannel: 0\nPlanes: 3\n\n  Channel:\t1 (red)\n Planes:3 slices\n1\nx\n3\nafter\n");
    EXPECT_EQ(m_first, (Values{9, 9, 9}));
    EXPECT_EQ(m_second, (Values{1, 0, 3})) << "a line that is no number gives 0";
}

TEST_F(CurveFile, TheLineBehindAChannelIsSpent)
{
    const CurveFileResult result =
        read("Channel: 0\nChannel: 1\nPlanes: 3\n1\n2\n3\nChannel: 1\nPlanes: 3\n4\n5\n6\n");
    EXPECT_EQ(m_first, (Values{9, 9, 9}));
    EXPECT_EQ(m_second, (Values{4, 5, 6}));
    EXPECT_EQ(result.channels, std::vector<int>{1});
}

TEST_F(CurveFile, AnotherNumberOfSlicesStopsAndKeepsWhatWasRead)
{
    const CurveFileResult result =
        read("Channel: 0\nPlanes: 3\n1\n2\n3\nChannel: 1\nPlanes: 4\n4\n5\n6\n7\n");
    EXPECT_EQ(result.error, path() + " is for a stack with 4.  This stack has 3 slices.");
    EXPECT_EQ(m_first, (Values{1, 2, 3}));
    EXPECT_EQ(m_second, (Values{8, 8, 8}));
    EXPECT_EQ(read("Channel: 0\nPlanes: 99999999999999\n").error,
              path() + " is for a stack with 99999999999999.  This stack has 3 slices.");
}

TEST_F(CurveFile, UnknownChannelsAreSkippedWithoutComplaint)
{
    const CurveFileResult result = read("Channel: 2\nPlanes: 3\n1\n2\n3\nChannel: red\nPlanes: 3\n1\n2\n3\n"
                                        "Channel: 99999999999\nPlanes: 3\n1\n2\n3\n"
                                        "Channel: 1\nPlanes: 3\n4\n5\n6\n");
    EXPECT_EQ(result.error, QString());
    EXPECT_EQ(m_first, (Values{9, 9, 9}));
    EXPECT_EQ(m_second, (Values{4, 5, 6}));
}

TEST_F(CurveFile, AFileCutShortLosesNothing)
{
    const CurveFileResult result = read("Channel: 0\nPlanes: 3\n1\n2\n3\nChannel: 1\nPlanes: 3\n4\n");
    EXPECT_EQ(result.error, path() + " ends in the middle of a curve.");
    EXPECT_EQ(m_first, (Values{1, 2, 3}));
    EXPECT_EQ(m_second, (Values{8, 8, 8}));
    EXPECT_EQ(read("Channel: 0").error, QString());
    EXPECT_EQ(read("Channel: 0\nPlanes: 3").error, path() + " ends in the middle of a curve.");
}

TEST_F(CurveFile, GarbageHoldsNoCurve)
{
    for (const QByteArray& garbage : {QByteArray(), QByteArray(5000, '\0'), QByteArray(200000, 'C'),
                                      QByteArray("\xff\xfe\x80"
                                                 "Channel: 0")}) {
        const CurveFileResult result = read(garbage);
        EXPECT_TRUE(result.channels.empty());
        EXPECT_EQ(result.error, QString());
    }
    EXPECT_EQ(m_first, (Values{9, 9, 9}));
}

TEST_F(CurveFile, NamesThatCannotBeOpenedAreReported)
{
    EXPECT_EQ(readCurveFile(path("none.mzp"), 3, {}).error, path("none.mzp") + " cannot be opened.");
    EXPECT_FALSE(writeCurveFile(path("none/curve.mzp"), std::vector<CurveBlock>{{0, {1}}}));
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST(CurveSession, WritesSixDigitsAndANewlineEach)
{
    QDomDocument document;
    ZCurve curve(3);
    curve[1] = 1.0 / 3;
    curve[2] = 2.5;
    document.appendChild(saveCurveToSession(curve, document));
    EXPECT_EQ(document.toString(-1), "<ZCurve saved=\"0\">1\n0.333333\n2.5\n</ZCurve>");
}

TEST(CurveSession, ReadsWhatItWrote)
{
    QDomDocument document;
    ZCurve curve(4);
    for (int z = 0; z < 4; ++z)
        curve[z] = 0.25 * z;
    const QDomElement element = saveCurveToSession(curve, document);
    EXPECT_EQ(*readSessionCurve(element, 4).curve(), *curve.curve());
    EXPECT_EQ(*readSessionCurve(element, 2).curve(), (Values{0, 0.25})) << "what is too much is left out";
    EXPECT_EQ(*readSessionCurve(element, 6).curve(), (Values{0, 0.25, 0.5, 0.75, 1, 1}));
    EXPECT_FALSE(readSessionCurve(element, 4).saved());
}

TEST(CurveSession, EmptyLinesAreDroppedAndBadOnesGiveZero)
{
    QDomDocument document;
    ASSERT_TRUE(document.setContent(QString("<ZCurve saved=\"0\">\n\n2\n\nx\n3</ZCurve>")));
    EXPECT_EQ(*readSessionCurve(document.documentElement(), 4).curve(), (Values{2, 0, 3, 1}));
    EXPECT_EQ(readSessionCurve(document.documentElement(), -3).size(), 0);
    EXPECT_EQ(*readSessionCurve(QDomElement(), 2).curve(), (Values{1, 1}));
}

} // namespace
} // namespace tirn
