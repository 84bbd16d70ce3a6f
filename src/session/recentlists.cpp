#include "session/recentlists.h"

#include <algorithm>

#include <QSettings>

#include "session/rawlayouttext.h"

namespace tirn {

namespace {

QString key(int stack, const char* what) { return QString::number(stack) + QLatin1String(what); }

QString nameKey(int stack, int element) { return key(stack, "name") + QString::number(element); }

int notNegative(const QVariant& value) { return std::max(0, value.toInt()); }

void writeStack(const RecentStack& stack, int number, QSettings& store)
{
    for (int element = 0; element < RecentLists::kMostElements; ++element) {
        const QString name = nameKey(number, element);
        if (element < static_cast<int>(stack.files.size()))
            store.setValue(name, stack.files[static_cast<std::size_t>(element)]);
        else if (store.contains(name))
            store.remove(name);
        else
            break;
    }
    store.setValue(key(number, "channels"), stack.channels);
    store.setValue(key(number, "timepoints"), stack.timePoints);
    // Only a stack that does not fit has this key, so that its length is known when it is read.
    const QString missing = key(number, "missing");
    const int left =
        stack.missing + std::max(0, static_cast<int>(stack.files.size()) - RecentLists::kMostElements);
    if (left > 0)
        store.setValue(missing, left);
    else
        store.remove(missing);
    const QString raw = key(number, "raw");
    if (stack.raw)
        store.setValue(raw, rawLayoutTexts(*stack.raw));
    else
        store.remove(raw);
}

RecentStack readStack(const QSettings& store, int number)
{
    RecentStack stack;
    for (int element = 0; element < RecentLists::kMostElements; ++element) {
        const QStringList names = store.value(nameKey(number, element)).toStringList();
        if (names.isEmpty() || names.first().isEmpty())
            break;
        stack.files.push_back(names);
    }
    stack.channels = notNegative(store.value(key(number, "channels")));
    stack.timePoints = notNegative(store.value(key(number, "timepoints")));
    stack.missing = notNegative(store.value(key(number, "missing")));
    stack.raw = rawLayoutOf(store.value(key(number, "raw")).toStringList());
    return stack;
}

} // namespace

QString RecentStack::text() const
{
    QStringList names;
    for (const QStringList& element : files)
        names.append(element.value(0));
    return names.join(' ');
}

void RecentLists::insertPalette(const QString& name)
{
    m_palettes.removeAll(name);
    m_palettes.prepend(name);
    while (m_palettes.size() > kMost)
        m_palettes.removeLast();
}

void RecentLists::insertStack(const RecentStack& stack)
{
    std::erase_if(m_stacks, [text = stack.text()](const RecentStack& each) { return each.text() == text; });
    m_stacks.insert(m_stacks.begin(), stack);
    if (m_stacks.size() > kMost)
        m_stacks.resize(kMost);
}

void RecentLists::addPalette(const QString& name)
{
    insertPalette(name);
    m_newPalettes.append(name);
}

void RecentLists::addStack(const RecentStack& stack)
{
    insertStack(stack);
    m_newStacks.push_back(stack);
}

void RecentLists::write(QSettings& store)
{
    store.sync();
    RecentLists lists = read(store);
    for (const QString& name : m_newPalettes)
        lists.insertPalette(name);
    for (const RecentStack& stack : m_newStacks)
        lists.insertStack(stack);
    *this = std::move(lists);
    store.beginGroup("RecentPalettes");
    for (int i = 0; i < m_palettes.size(); ++i)
        store.setValue(QString::number(i), m_palettes[i]);
    store.endGroup();
    store.beginGroup("RecentStacks");
    for (std::size_t i = 0; i < m_stacks.size(); ++i)
        writeStack(m_stacks[i], static_cast<int>(i), store);
    store.endGroup();
}

RecentLists RecentLists::read(QSettings& store)
{
    RecentLists lists;
    // From the last to the first, so that the newest ends on top.
    store.beginGroup("RecentPalettes");
    for (int i = kMost - 1; i >= 0; --i) {
        const QString name = store.value(QString::number(i)).toString();
        if (!name.isEmpty())
            lists.insertPalette(name);
    }
    store.endGroup();
    store.beginGroup("RecentStacks");
    for (int i = kMost - 1; i >= 0; --i) {
        const RecentStack stack = readStack(store, i);
        if (!stack.files.empty())
            lists.insertStack(stack);
    }
    store.endGroup();
    return lists;
}

} // namespace tirn
