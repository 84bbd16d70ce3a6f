#include <cmath>
#include <limits>

#include <QFile>

#include <gtest/gtest.h>

#include "mesh/segmentation.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/stlfile.h"

namespace tirn {
namespace {

using test::asciiStl;
using test::binaryStl;
using test::facetText;
using test::StlNumbers;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

class Stl : public testing::Test
{
protected:
    /// Loads these bytes as a file.
    bool load(const QByteArray& bytes)
    {
        const QString name = m_directory.filePath("mesh.stl");
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        return mesh.load(name);
    }
    /// The warnings of a file that is refused.
    QStringList warningsOf(const QByteArray& bytes)
    {
        const test::LogCapture log;
        EXPECT_FALSE(load(bytes));
        return log.warnings();
    }
    /// The first vertex of a file of one facet.
    Vector3f vertexOf(const QString& text)
    {
        EXPECT_TRUE(load(asciiStl(facetText(text)))) << text.toStdString();
        return mesh.facets.at(0).vertices[0];
    }
    QString loadSample(const QString& name)
    {
        const test::LogCapture log;
        const bool done = mesh.load(test::testData("stl/" + name));
        return done ? QString() : log.warnings().value(0, "no text");
    }

    QTemporaryDir m_directory;
    Segmentation mesh;
};

TEST(Triangle, ComparesItsVertices)
{
    const Triangle facet = {{{{1, -5, 9}, {3, 2, 7}, {-2, 0, 8}}}, {99, 99, 99}};
    EXPECT_EQ(facet.minX(), -2);
    EXPECT_EQ(facet.maxX(), 3);
    EXPECT_EQ(facet.minY(), -5);
    EXPECT_EQ(facet.maxY(), 2);
    EXPECT_EQ(facet.minZ(), 7);
    EXPECT_EQ(facet.maxZ(), 9);
}

TEST(Material, HasItsDefaults)
{
    const Segmentation mesh;
    EXPECT_EQ(mesh.material.ambientAndDiffuse, (std::array<float, 4>{0.75F, 0, 0.75F, 1}));
    EXPECT_EQ(mesh.material.emission, (std::array<float, 4>{0.5F, 0, 0.5F, 1}));
    EXPECT_EQ(mesh.material.specular, (std::array<float, 4>{0.25F, 0.75F, 0.25F, 1}));
    EXPECT_EQ(mesh.material.shininess, 0.5F);
}

TEST_F(Stl, AsciiFacetsAreRead)
{
    const test::LogCapture log;
    ASSERT_TRUE(load("  solid  a surface\n" + asciiStl(facetText("-1.5 2 3.25")).mid(11)));
    EXPECT_EQ(mesh.name, "a surface");
    ASSERT_EQ(mesh.facets.size(), 1U);
    EXPECT_EQ(mesh.facets[0], (Triangle{{{{-1.5F, 2, 3.25F}, {1, 0, 0}, {0, 1, 0}}}, {0, 0, 1}}));
    EXPECT_EQ(mesh.bounds, (MeshBounds{{-1.5F, 0, 0}, {1, 2, 3.25F}}));
    EXPECT_EQ(
        log.lines(),
        (QStringList{"xmin: -1.500000 xmax: 1.000000 ymin: 0.000000 ymax: 2.000000 zmin: 0.000000 zmax: "
                     "3.250000",
                     "name a surface facets 1\n xmin -1 ymin 0 zmin 0\n xmax 1 ymax 2 zmax 3"}));
}

TEST_F(Stl, BinaryFacetsAreRead)
{
    const test::LogCapture log;
    const std::vector<StlNumbers> facets = {{0, 0, 1, 1, 2, 3, 4, 5, 6, 7, 8, 9},
                                            {0, 1, 0, -1, -2, -3, 0, 0, 0, 1, 1, 1}};
    ASSERT_TRUE(load(binaryStl(facets)));
    EXPECT_EQ(mesh.name, QString());
    EXPECT_EQ(mesh.facets, (std::vector<Triangle>{{{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}, {0, 0, 1}},
                                                  {{{{-1, -2, -3}, {0, 0, 0}, {1, 1, 1}}}, {0, 1, 0}}}));
    EXPECT_EQ(mesh.bounds, (MeshBounds{{-1, -2, -3}, {7, 8, 9}}));
    EXPECT_EQ(log.lines().first(), " facets 2");
}

TEST_F(Stl, EachLineThatIsMissingHasItsText)
{
    const char* const texts[] = {"can't find normal",   "can't find outer loop", "can't find vertex 1",
                                 "can't find vertex 2", "can't find vertex 3",   "can't find endloop",
                                 "can't find endfacet"};
    for (int line = 0; line < 7; ++line) {
        QStringList lines = facetText() + facetText();
        lines[7 + line] = "bogus";
        EXPECT_EQ(warningsOf(asciiStl(lines)), QStringList{texts[line]});
        lines.removeAt(7 + line);
        // Without it the next line stands in its place, but for a vertex, of which the third is then missing.
        const int missing = line >= 2 && line <= 4 ? 4 : line;
        EXPECT_EQ(warningsOf(asciiStl(lines)), QStringList{texts[missing]}) << line;
        EXPECT_EQ(warningsOf(asciiStl(lines.mid(0, 7 + line)).replace("endsolid\n", "")),
                  QStringList{texts[line]})
            << "the file ends there";
    }
}

TEST_F(Stl, WordsAreCaseSensitive)
{
    QStringList lines = facetText();
    lines[0] = "Facet normal 0 0 1";
    EXPECT_EQ(warningsOf(asciiStl(lines)), QStringList{"can't find normal"});
    EXPECT_EQ(warningsOf("SOLID name\n"), QStringList{"No idea what this file is"});
}

TEST_F(Stl, WhiteSpaceMayStandBehindEveryLine)
{
    QStringList lines = facetText();
    lines[0] = "facet normal 0.0 0.0 1.0";
    for (QString& line : lines)
        line += " \t ";
    ASSERT_TRUE(load(asciiStl(lines)));
    EXPECT_EQ(mesh.facets[0].normal, (Vector3f{0, 0, 1}));
}

TEST_F(Stl, LinesMayEndTheOtherWay)
{
    EXPECT_TRUE(load(asciiStl(facetText()).replace("\n", "\r\n")));
    EXPECT_EQ(mesh.name, "name");
    EXPECT_EQ(mesh.facets.size(), 1U);
}

TEST_F(Stl, AnEndMayHaveAName)
{
    for (const char* end : {"endsolid name", "endsolid\tname", "\t endsolid  ", "endsolid"})
        EXPECT_TRUE(load(asciiStl(facetText()).replace("endsolid", end))) << end;
    EXPECT_EQ(warningsOf(asciiStl(facetText()).replace("endsolid", "endsolidname")),
              QStringList{"can't find normal"});
}

TEST_F(Stl, NumbersMayHaveExponentsAndALeadingPlus)
{
    EXPECT_EQ(vertexOf("1.5e-3 -2.5E+2 +4e1"), (Vector3f{1.5e-3F, -250, 40}));
    EXPECT_EQ(vertexOf("1e-3 2.e2 +0.5"), (Vector3f{1e-3F, 200, 0.5F}));
    EXPECT_EQ(vertexOf("1.0e39 -1e40 1e-60"), (Vector3f{kInfinity, -kInfinity, 0}));
    QStringList lines = facetText();
    lines[0] = "facet normal -4.371139e-08 +0.000000e+00 1.000000E+00";
    ASSERT_TRUE(load(asciiStl(lines)));
    EXPECT_EQ(mesh.facets[0].normal, (Vector3f{-4.371139e-08F, 0, 1}));
    for (const char* text : {"1.5e+ 0 0", "1.5e-x 0 0", "+ 1 0 0", "+-1 0 0", "1x5e3 0 0"})
        EXPECT_EQ(warningsOf(asciiStl(facetText(text))), QStringList{"can't find vertex 1"}) << text;
}

TEST_F(Stl, NumbersAreDigitsAnyCharacterDigits)
{
    EXPECT_EQ(vertexOf("1.25 -2 3."), (Vector3f{1.25F, -2, 3}));
    EXPECT_EQ(vertexOf("1,5 2x5 3"), (Vector3f{1, 2, 3})) << "any character, and then what stands in front";
    EXPECT_EQ(vertexOf("1e2 2 3"), (Vector3f{100, 2, 3})) << "which is a number all the same here";
    EXPECT_EQ(vertexOf("1 2 3 4"), (Vector3f{1, 3, 4})) << "a blank is a character, too";
    EXPECT_EQ(vertexOf("0007 -0.5 00"), (Vector3f{7, -0.5F, 0}));
    for (const char* text :
         {".5 0 0", "+.5 0 0", "1 2", "1 2 3 4 5 6 7", "-.5 0 0", "nan 0 0", "inf 0 0", "", "--1 0 0"})
        EXPECT_EQ(warningsOf(asciiStl(facetText(text))), QStringList{"can't find vertex 1"}) << text;
}

TEST_F(Stl, WordsNeedNoBlanksInFrontOfNumbers)
{
    QStringList lines = facetText();
    lines[0] = "facetnormal0 0 1";
    lines[2] = "vertex1 2 3";
    EXPECT_TRUE(load(asciiStl(lines)));
    EXPECT_EQ(mesh.facets[0].vertices[0], (Vector3f{1, 2, 3}));
    lines[1] = "outerloop";
    EXPECT_EQ(warningsOf(asciiStl(lines)), QStringList{"can't find outer loop"});
}

TEST_F(Stl, LongRowsOfDigitsAreInfiniteAndCostNoTime)
{
    const QString digits(60000, '9');
    EXPECT_EQ(vertexOf(digits + " -" + QString(50, '9') + " 0." + QString(400, '0') + "1"),
              (Vector3f{kInfinity, -kInfinity, 0}));
    EXPECT_EQ(warningsOf(asciiStl(facetText(digits + "x" + digits))), QStringList{"can't find vertex 1"});
}

TEST_F(Stl, TheSizeSaysThatAFileIsBinaryWhateverItBeginsWith)
{
    for (const char* header : {"solid but binary", "  solid", "a solid", "solid\nfacet normal 0 0 1"}) {
        ASSERT_TRUE(load(binaryStl({StlNumbers{0, 0, 1, 5}}, 1, header))) << header;
        EXPECT_EQ(mesh.name, QString());
        ASSERT_EQ(mesh.facets.size(), 1U);
        EXPECT_EQ(mesh.facets[0].vertices[0], (Vector3f{5, 0, 0}));
    }
    EXPECT_TRUE(load(binaryStl({StlNumbers{}}, 1, "solid") + "!")) << "something behind it does no harm";
    EXPECT_EQ(warningsOf(binaryStl({StlNumbers{}}, 2, "solid")), QStringList{"can't find normal"});
}

TEST_F(Stl, WhatIsTooShortForEitherFormIsUnknown)
{
    EXPECT_EQ(warningsOf(""), QStringList{"No idea what this file is"});
    EXPECT_EQ(warningsOf(binaryStl({}).left(83)), QStringList{"No idea what this file is"});
    EXPECT_TRUE(load(binaryStl({})));
    EXPECT_TRUE(mesh.facets.empty());
    EXPECT_EQ(mesh.bounds, MeshBounds());
}

TEST_F(Stl, TheCountOfFacetsIsComparedAndNotTrusted)
{
    const test::LogCapture log;
    ASSERT_TRUE(load(binaryStl({StlNumbers{1}, StlNumbers{2}}, 0xFFFFFFFF)));
    EXPECT_EQ(mesh.facets.size(), 2U);
    EXPECT_LT(mesh.facets.capacity(), 100U);
    EXPECT_EQ(log.warnings(), QStringList{"facet count does not match 2 vs -1"});
    EXPECT_TRUE(log.contains(" facets -1"));
}

TEST_F(Stl, FacetsBehindTheCountAreLeft)
{
    const test::LogCapture log;
    ASSERT_TRUE(load(binaryStl({StlNumbers{1}, StlNumbers{2}, StlNumbers{3}}, 2)));
    EXPECT_EQ(mesh.facets.size(), 2U);
    EXPECT_TRUE(log.warnings().isEmpty());
}

TEST_F(Stl, AFileCutShortKeepsItsWholeFacets)
{
    const QByteArray whole = binaryStl({StlNumbers{1}, StlNumbers{2}});
    for (int length = 84; length < whole.size(); ++length) {
        const test::LogCapture log;
        ASSERT_TRUE(load(whole.left(length)));
        // The attributes belong to a record.
        EXPECT_EQ(mesh.facets.size(), length < 134 ? 0U : 1U) << length;
        EXPECT_EQ(log.warnings().size(), 1);
    }
}

TEST_F(Stl, ManyFacetsAreReadInPieces)
{
    std::vector<StlNumbers> facets(20001);
    for (std::size_t i = 0; i < facets.size(); ++i)
        facets[i][3] = static_cast<float>(i);
    ASSERT_TRUE(load(binaryStl(facets)));
    ASSERT_EQ(mesh.facets.size(), 20001U);
    for (std::size_t i = 0; i < facets.size(); ++i)
        ASSERT_EQ(mesh.facets[i].vertices[0][0], static_cast<float>(i));
    QStringList lines;
    for (int i = 0; i < 20001; ++i)
        lines += facetText();
    const test::LogCapture log;
    ASSERT_TRUE(load(asciiStl(lines)));
    EXPECT_EQ(mesh.facets.size(), 20001U);
    EXPECT_EQ(log.lines().filter("facets: "), (QStringList{"facets: 10000", "facets: 20000"}));
}

TEST_F(Stl, WhatIsNoNumberDoesNotCountForTheBox)
{
    const float nan = std::nanf("");
    ASSERT_TRUE(load(binaryStl({StlNumbers{0, 0, 1, nan, 2, nan, 4, nan, nan, -1, 8, nan}})));
    EXPECT_EQ(mesh.bounds, (MeshBounds{{-1, 2, 0}, {4, 8, 0}}));
    EXPECT_TRUE(std::isnan(mesh.facets[0].vertices[0][0]));
    ASSERT_TRUE(load(binaryStl({StlNumbers{0, 0, 1, kInfinity, 0, 0, 1, 1, 1}})));
    EXPECT_EQ(mesh.bounds.max[0], kInfinity);
}

TEST_F(Stl, AFailureLeavesTheMeshThatWasThere)
{
    ASSERT_TRUE(load(asciiStl(facetText())));
    const std::vector<Triangle> before = mesh.facets;
    warningsOf("solid other\nfacet\n");
    EXPECT_EQ(mesh.name, "name");
    EXPECT_EQ(mesh.facets, before);
    const test::LogCapture log;
    EXPECT_FALSE(mesh.load(m_directory.path()));
    EXPECT_FALSE(mesh.load(m_directory.filePath("none.stl")));
    EXPECT_EQ(mesh.facets, before);
}

TEST_F(Stl, RealFilesAreWhatOthersRead)
{
    struct Fact
    {
        const char* name;
        std::size_t facets;
        MeshBounds bounds;
        Vector3f normal;
    };
    // Numbers that Python's struct module and plain text functions read.
    const Fact facts[] = {
        {"3DSMaxExport.STL",
         2000,
         {{-27.370040893554688F, -2.42812180519104F, 9.698570251464844F},
          {29.66449737548828F, 45.91313934326172F, 62.34255599975586F}},
         {0.4045202136039734F, -0.2591605484485626F, -0.8770400285720825F}},
        {"7_8ths_cube.stl",
         24,
         {{-20.00000762939453F, -20.000011444091797F, -20}, {20.000003814697266F, 20.00000762939453F, 20}},
         {-5.7220457695398076e-08F, 0, -1}},
        {"Moon.stl",
         116,
         {{0, 0, 0}, {1.6284099817276F, 0.3499999940395355F, 3}},
         {-0.09161796420812607F, 0, -0.07209260016679764F}},
        {"Star.stl",
         68,
         {{1.9999999949504854e-06F, 0, 0}, {2.5980799198150635F, 0.3499999940395355F, 3}},
         {0, -0.6459746360778809F, 0}},
        {"soup.stl",
         100,
         {{0.0023589066695421934F, 0.002530524041503668F, 0.006098172161728144F},
          {0.9998051524162292F, 0.9990550875663757F, 0.999005138874054F}},
         {0.2232132852077484F, -0.6257603168487549F, 0.747395396232605F}},
        {"Moon_ascii.stl", 116, {{0, 0, 0}, {1.62841F, 0.35F, 3}}, {-0.091618F, 0, -0.072093F}},
        {"triangle_with_empty_solid.stl", 1, {{-1, -1, 0}, {1, 1, 0}}, {0, 0, 1}},
        {"HalfDonut.stl",
         288,
         {{0, 0, 0}, {3, 0.5F, 3}},
         {-0.014564807526767254F, 0.07322292029857635F, -0.002897128462791443F}},
        {"Cube.stl", 12, {{0, 0, 0}, {2, 2, 2}}, {-1, 0, 0}},
        {"sphereWithHole.stl", 285, {{0, 0, 0}, {3, 3, 3}}, {-0.13F, -0.13F, -0.98F}},
    };
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.name);
        ASSERT_EQ(loadSample(fact.name), QString());
        EXPECT_EQ(mesh.facets.size(), fact.facets);
        EXPECT_EQ(mesh.bounds, fact.bounds);
        EXPECT_EQ(mesh.facets[0].normal, fact.normal);
    }
    EXPECT_EQ(mesh.name, "tinysphere_withhole");
}

TEST_F(Stl, AFileOfASolidWithoutFacetsIsAnEmptySurface)
{
    EXPECT_EQ(loadSample("empty.stl"), QString());
    EXPECT_EQ(mesh.name, "Empty");
    EXPECT_TRUE(mesh.facets.empty());
}

TEST(DrawnSurface, IsTheNewestUnlessItIsHidden)
{
    std::vector<std::unique_ptr<Segmentation>> surfaces;
    EXPECT_EQ(drawnSurface(surfaces), nullptr);
    for (int i = 0; i < 2; ++i) {
        surfaces.push_back(std::make_unique<Segmentation>());
        EXPECT_EQ(drawnSurface(surfaces), nullptr) << "a surface without facets";
        surfaces.back()->facets.resize(1);
    }
    EXPECT_EQ(drawnSurface(surfaces), surfaces[1].get());
    surfaces[1]->visible = false;
    EXPECT_EQ(drawnSurface(surfaces), nullptr);
    surfaces[1]->visible = true;
    EXPECT_EQ(drawnSurface(surfaces), surfaces[1].get());
}

TEST(SurfaceRevisions, TellSurfacesAndTheirChangesApart)
{
    Segmentation one;
    const Segmentation other;
    EXPECT_NE(one.revision, other.revision);
    const std::uint64_t before = one.revision;
    one.facetsChanged();
    EXPECT_NE(one.revision, before);
    EXPECT_NE(one.revision, other.revision);
}

} // namespace
} // namespace tirn
