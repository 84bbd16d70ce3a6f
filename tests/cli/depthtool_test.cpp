// Depth curves, made and baked by the tool.

#include <cmath>

#include <QDir>

#include <gtest/gtest.h>

#include "cli/toolrun.h"
#include "support/picfile.h"
#include "support/slowdepth.h"
#include "support/stkfile.h"

namespace tirn {
namespace {

using test::Outcome;
using test::tool;
using Values = std::vector<double>;

class DepthTool : public testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// A stack of 4 x 3 x 5 words whose layers lose light; the second channel is turned around.
    QString stack(int channels = 1)
    {
        test::StkFile file;
        file.channels = channels;
        file.value = [](int x, int y, int z, int c) {
            return static_cast<int>((1000 + 10 * x + y) * std::exp(-0.3 * (c == 0 ? z : 4 - z)));
        };
        return file.save(path("in.stk"));
    }
    void write(const QString& name, const QByteArray& text) { test::saveBytes(path(name), text); }
    QStringList lines(const QString& name) const
    {
        return QString::fromUtf8(test::fileContent(path(name))).split('\n', Qt::SkipEmptyParts);
    }
    /// The block that the tool writes for a channel of this curve.
    static QStringList block(int channel, const Values& curve)
    {
        QStringList all = {QString("Channel: %1").arg(channel), QString("Planes: %1").arg(curve.size())};
        for (const double value : curve)
            all << QString::number(value, 'g', 6);
        return all;
    }
    std::vector<int> words(const QByteArray& bytes) const
    {
        std::vector<int> all;
        for (int i = 0; i + 1 < bytes.size(); i += 2)
            all.push_back(static_cast<std::uint8_t>(bytes[i]) | static_cast<std::uint8_t>(bytes[i + 1]) << 8);
        return all;
    }

    QTemporaryDir m_directory;
};

TEST_F(DepthTool, MakesCurvesByFormula)
{
    const QString in = stack();
    ASSERT_EQ(tool({"depth", in, path("a.mzp")}).code, 0);
    EXPECT_EQ(lines("a.mzp"), block(0, test::slowPowerCurve(5, 1, 1, 0, 4))) << "the defaults";
    ASSERT_EQ(tool({"depth", "--scale", "0.5", "--offset", "1.5", "--maximum", "3", "--power", "2", in,
                    path("b.mzp")})
                  .code,
              0);
    EXPECT_EQ(lines("b.mzp"), block(0, test::slowPowerCurve(5, 0.5, 2, 1.5, 3)));
    ASSERT_EQ(tool({"depth", "--linear", "--offset", "1", "--maximum", "3", in, path("c.mzp")}).code, 0);
    EXPECT_EQ(lines("c.mzp"), block(0, test::slowLinearCurve(5, 1, 3)));
}

TEST_F(DepthTool, NormalizeMeanMakesEachChannelFlat)
{
    const QString in = stack(2);
    ASSERT_EQ(tool({"depth", "--method", "mean", in, path("a.mzp")}).code, 0);
    ImageFile file({in});
    ASSERT_TRUE(file.read());
    QStringList expected;
    for (int c = 0; c < 2; ++c) {
        const Values means = test::slowSliceMeans(test::SlowStack(file), c);
        Values curve;
        for (const double mean : means)
            curve.push_back(*std::max_element(means.begin(), means.end()) / mean);
        expected += block(c, curve);
    }
    EXPECT_EQ(lines("a.mzp"), expected);
    ASSERT_EQ(tool({"depth", "--method", "mean", "--channel", "1", in, path("b.mzp")}).code, 0);
    EXPECT_EQ(lines("b.mzp"), expected.mid(7));
}

TEST_F(DepthTool, SearchesFindThePowerOfTheMostEntropy)
{
    const QString in = stack();
    ImageFile file({in});
    ASSERT_TRUE(file.read());
    const test::SlowStack slow(file);
    const int bits = file.attributes().significantBits();
    const auto deficit = [&](double power) {
        return bits - test::slowScaledEntropy(slow, 0, static_cast<int>(file.statsList()[0].histogram.size()),
                                              test::slowPowerCurve(5, 1, power, 0, 4));
    };
    double best = 0.5;
    for (double power = 0.5; power <= 2; power += 0.25)
        best = deficit(power) < deficit(best) - 1e-9 ? power : best;
    ASSERT_EQ(tool({"depth", "--method", "linear", "--min", "0.5", "--max", "2", "--step", "0.25", in,
                    path("a.mzp")})
                  .code,
              0);
    EXPECT_EQ(lines("a.mzp"), block(0, test::slowPowerCurve(5, 1, best, 0, 4)));
    ASSERT_EQ(tool({"depth", "--method", "brent", in, path("b.mzp")}).code, 0);
    const double root = std::clamp(test::slowBrent(deficit, 0, 4, 0.01).x, 0.1, 10.0);
    const QStringList found = lines("b.mzp");
    const Values expected = test::slowPowerCurve(5, 1, root, 0, 4);
    ASSERT_EQ(found.size(), 7);
    for (int z = 0; z < 5; ++z)
        EXPECT_NEAR(found[2 + z].toDouble(), expected[static_cast<std::size_t>(z)], 1e-4);
}

TEST_F(DepthTool, HelpPrintsTheDefaults)
{
    const QByteArray help = tool({"depth", "--help"}).out.simplified();
    for (const char* text : {"(default 0)", "(default 4)", "(default 0.01)", "(default 1)"})
        EXPECT_TRUE(help.contains(text)) << text;
}

TEST_F(DepthTool, WrongUsageEndsWithTwo)
{
    const QString in = stack();
    for (const QStringList& options :
         {QStringList{"--method", "max"}, QStringList{"--method", "mean", "--linear"},
          QStringList{"--power", "1", "--linear"}, QStringList{"--power", "0.01"},
          QStringList{"--power", "x"}, QStringList{"--maximum", "11"}, QStringList{"--maximum", "1.5"},
          QStringList{"--scale", "0"}, QStringList{"--min", "3", "--max", "2"}, QStringList{"--step", "-1"},
          QStringList{"--channel", "-1"}, QStringList{"--offset", "nan"}}) {
        const Outcome outcome = tool(QStringList{"depth"} + options + QStringList{in, path("a.mzp")});
        EXPECT_EQ(outcome.code, 2) << options.join(' ').toStdString();
        EXPECT_TRUE(outcome.err.endsWith("see tirntool --help\n"));
    }
    EXPECT_EQ(tool({"depth", in}).code, 2);
    EXPECT_EQ(tool({"depth", in, path("a.txt")}).code, 2);
    EXPECT_EQ(files(), QStringList{"in.stk"});
}

TEST_F(DepthTool, FailuresEndWithOneAndLeaveNothing)
{
    const QString in = stack();
    EXPECT_EQ(tool({"depth", "--channel", "1", in, path("a.mzp")}).err,
              "tirntool: " + in + ": --channel: the stack has no such channel\n");
    EXPECT_EQ(tool({"depth", path("none.stk"), path("a.mzp")}).code, 1);
    EXPECT_EQ(tool({"depth", in, path("none/a.mzp")}).code, 1);
    write("a.mzp", "mine");
    EXPECT_EQ(tool({"depth", in, path("a.mzp")}).code, 1);
    EXPECT_EQ(test::fileContent(path("a.mzp")), "mine");
    EXPECT_EQ(tool({"depth", "--overwrite", in, path("a.mzp")}).code, 0);
    EXPECT_EQ(files(), (QStringList{"a.mzp", "in.stk"}));
}

TEST_F(DepthTool, ACurveIsBakedIntoTheVoxels)
{
    const QString in = stack();
    write("c.mzp", "Channel: All\nPlanes: 5\n1\n0.5\n2\n0\n100\n");
    const Outcome outcome = tool({"convert", "--zcurve", path("c.mzp"), in, path("o.raw")});
    ASSERT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    const std::vector<int> before = words(tool({"dump", in, "-"}).out);
    const std::vector<int> after = words(test::fileContent(path("o.raw")));
    ASSERT_EQ(after.size(), before.size());
    const double factors[] = {1, 0.5, 2, 0, 100};
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(after[i], std::min(65535.0, std::floor(before[i] * factors[i / 12] + 0.5)));
}

TEST_F(DepthTool, OfSeveralChannelsTheFirstIsChangedAndAWarningSaysSo)
{
    const QString in = stack(2);
    write("c.mzp", "Channel: 0\nPlanes: 5\n2\n2\n2\n2\n2\nChannel: 1\nPlanes: 5\n3\n3\n3\n3\n3\n");
    const Outcome outcome = tool({"convert", "--zcurve", path("c.mzp"), in, path("o.raw")});
    ASSERT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err,
              "tirntool: " + path("c.mzp") + ": warning: a depth curve changes the first channel only\n");
    const std::vector<int> before = words(tool({"dump", in, "-"}).out);
    const std::vector<int> after = words(test::fileContent(path("o.raw")));
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(after[i], i % 2 == 0 ? before[i] * 6 : before[i]);
}

TEST_F(DepthTool, CurvesThatDoNotFitEndWithOne)
{
    const QString in = stack();
    write("other.mzp", "Channel: 0\nPlanes: 4\n1\n1\n1\n1\n");
    EXPECT_EQ(tool({"convert", "--zcurve", path("other.mzp"), in, path("o.raw")}).err,
              "tirntool: " + in + ": " + path("other.mzp") +
                  " is for a stack with 4.  This stack has 5 slices.\n");
    write("garbage.mzp", QByteArray(3000, '\x93'));
    EXPECT_EQ(tool({"convert", "--zcurve", path("garbage.mzp"), in, path("o.raw")}).err,
              "tirntool: " + in + ": " + path("garbage.mzp") + " holds no curve for this stack.\n");
    EXPECT_EQ(tool({"convert", "--zcurve", path("none.mzp"), in, path("o.raw")}).err,
              "tirntool: " + path("none.mzp") + ": No such file\n");
    EXPECT_FALSE(QFile::exists(path("o.raw")));
}

TEST_F(DepthTool, ACurveOfItsOwnMakesAStackFlat)
{
    const QString in = stack();
    ASSERT_EQ(tool({"depth", "--method", "mean", in, path("c.mzp")}).code, 0);
    ASSERT_EQ(tool({"convert", "--zcurve", path("c.mzp"), in, path("o.stk")}).code, 0);
    ImageFile file({path("o.stk")});
    ASSERT_TRUE(file.read());
    const Values means = test::slowSliceMeans(test::SlowStack(file), 0);
    for (const double mean : means)
        EXPECT_NEAR(mean, means[0], 0.02 * means[0]);
}

} // namespace
} // namespace tirn
