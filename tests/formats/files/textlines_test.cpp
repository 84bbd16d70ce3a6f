#include <gtest/gtest.h>

#include "formats/files/textlines.h"
#include "support/picfile.h"

namespace tirn {
namespace {

QStringList linesOf(const QByteArray& bytes)
{
    const QTemporaryDir directory;
    QFile file(test::saveBytes(directory.filePath("a"), bytes));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    TextLines lines(file);
    QStringList all;
    for (QString line; lines.next(line);)
        all.append(line);
    return all;
}

QByteArray utf16(const QString& text, bool big)
{
    QByteArray bytes(big ? "\xfe\xff" : "\xff\xfe", 2);
    for (const QChar c : text) {
        const char low = static_cast<char>(c.unicode() & 0xff);
        const char high = static_cast<char>(c.unicode() >> 8);
        bytes.append(big ? high : low).append(big ? low : high);
    }
    return bytes;
}

TEST(TextLines, EndWithOrWithoutANewline)
{
    EXPECT_EQ(linesOf("a\r\n\nb"), (QStringList{"a", "", "b"}));
    EXPECT_EQ(linesOf("a\nb\n"), (QStringList{"a", "b"}));
    EXPECT_EQ(linesOf(""), QStringList());
    EXPECT_EQ(linesOf("\n"), QStringList{""});
}

TEST(TextLines, EndAfter65536)
{
    EXPECT_EQ(linesOf(QByteArray(4 << 20, '\n')).size(), 65536);
    EXPECT_EQ(linesOf(QByteArray(70000, '\n')).size(), 65536);
    EXPECT_EQ(linesOf(QByteArray(65536, '\n')).size(), 65536);
}

TEST(TextLines, AByteOrderMarkSaysHowToRead)
{
    const QString text = QString::fromUtf8("[\xc2\xb5m]\r\nx=1\n");
    const QStringList expected = {QString::fromUtf8("[\xc2\xb5m]"), "x=1"};
    EXPECT_EQ(linesOf(utf16(text, false)), expected);
    EXPECT_EQ(linesOf(utf16(text, true)), expected);
    EXPECT_EQ(linesOf("\xef\xbb\xbf" + text.toUtf8()), expected);
    EXPECT_EQ(linesOf(text.toUtf8()), expected);
    EXPECT_EQ(linesOf(text.toLatin1()), expected);
}

TEST(TextLines, AnOddLastByteOfUtf16IsLeftOut)
{
    EXPECT_EQ(linesOf(utf16("ab\ncd", false) + "x"), (QStringList{"ab", "cd"}));
}

TEST(TextLines, AZeroByteEndsAPlainText)
{
    EXPECT_EQ(linesOf(QByteArray("a\nb\0c\nd\n", 8)), QStringList{"a"});
}

TEST(TextLines, ALineOfMoreThan64KilobytesEndsTheText)
{
    const QByteArray fitting = QByteArray(65536, 'x');
    EXPECT_EQ(linesOf("a\n" + fitting + "\nb\n").size(), 3);
    EXPECT_EQ(linesOf("a\n" + fitting + "x\nb\n"), QStringList{"a"});
    EXPECT_EQ(linesOf("a\n" + QByteArray(10 << 20, 'x')), QStringList{"a"});
    EXPECT_EQ(linesOf(utf16("a\n" + QString(40000, 'x') + "\nb\n", false)), QStringList{"a"});
}

TEST(TextLines, FourMegabytesEndTheText)
{
    const QByteArray line = QByteArray(1023, 'x') + '\n';
    EXPECT_EQ(linesOf(line.repeated(4096)).size(), 4096);
    EXPECT_EQ(linesOf(line.repeated(4200)).size(), 4096);
}

} // namespace
} // namespace tirn
