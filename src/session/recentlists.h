#pragma once

#include <optional>
#include <vector>

#include <QString>
#include <QStringList>

#include "image/rawlayout.h"

class QSettings;

namespace tirn {

/// A stack that was loaded, as it is loaded again.
struct RecentStack
{
    /// An element for each stack that was opened, as in a load.
    std::vector<QStringList> files;
    /// 0 where it is not known.
    int channels = 0;
    int timePoints = 0;
    /// Elements that the store had no room for.
    int missing = 0;
    /// How headerless files are read.
    std::optional<RawLayout> raw = std::nullopt;

    /// The first names of the elements, joined by blanks: what tells one stack from another.
    QString text() const;
    bool operator==(const RecentStack&) const = default;
};

/// What was opened last, newest first, at most ten of each.
class RecentLists
{
public:
    static constexpr int kMost = 10;
    /// The store holds so many elements of a stack.
    static constexpr int kMostElements = 100;

    const QStringList& palettes() const { return m_palettes; }
    const std::vector<RecentStack>& stacks() const { return m_stacks; }
    /// Puts an entry on top; an equal one goes, and so does the eleventh.
    void addPalette(const QString& name);
    void addStack(const RecentStack& stack);

    /// Groups "RecentPalettes" and "RecentStacks". What a store holds besides is left alone when written and
    /// passed over when read. What was added here goes on top of what others have written meanwhile.
    void write(QSettings& store);
    static RecentLists read(QSettings& store);

private:
    void insertPalette(const QString& name);
    void insertStack(const RecentStack& stack);

    QStringList m_palettes;
    std::vector<RecentStack> m_stacks;
    /// What was not written yet, in the order in which it came.
    QStringList m_newPalettes;
    std::vector<RecentStack> m_newStacks;
};

} // namespace tirn
