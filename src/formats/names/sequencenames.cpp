#include "formats/names/sequencenames.h"

#include <algorithm>
#include <optional>

#include <QHash>

namespace tirn {

namespace {

/// Where a field is not chosen there is no group.
std::vector<DigitGroup> chosenGroups(const std::vector<DigitGroup>& groups, std::initializer_list<int> fields)
{
    std::vector<DigitGroup> chosen;
    for (const int field : fields) {
        if (field >= 0 && field < static_cast<int>(groups.size()))
            chosen.push_back(groups[static_cast<std::size_t>(field)]);
    }
    return chosen;
}

/// What names have in common that differ in the digits of some groups only; all white space is the same.
std::optional<QString> keyOf(QString name, const std::vector<DigitGroup>& differing)
{
    for (const DigitGroup& group : differing) {
        if (group.start + group.length > name.size())
            return std::nullopt;
        for (int i = group.start; i < group.start + group.length; ++i) {
            if (!name.at(i).isDigit())
                return std::nullopt;
            name[i] = QChar::Null;
        }
    }
    for (QChar& character : name) {
        if (character.isSpace())
            character = QLatin1Char(' ');
    }
    return name;
}

/// In the order of first appearance.
std::vector<QStringList> grouped(const QStringList& names, const std::vector<DigitGroup>& differing)
{
    std::vector<QStringList> lists;
    QHash<QString, std::size_t> places;
    for (const QString& name : names) {
        const std::optional<QString> key = keyOf(name, differing);
        if (!key)
            continue;
        auto place = places.constFind(*key);
        if (place == places.constEnd()) {
            place = places.insert(*key, lists.size());
            lists.emplace_back();
        }
        lists[*place].append(name);
    }
    return lists;
}

} // namespace

std::vector<DigitGroup> digitGroups(const QString& name)
{
    std::vector<DigitGroup> groups;
    for (int i = 0; i < name.size(); ++i) {
        if (!name.at(i).isDigit())
            continue;
        if (!groups.empty() && groups.back().start + groups.back().length == i)
            ++groups.back().length;
        else
            groups.push_back({i, 1});
    }
    return groups;
}

int groupAt(const std::vector<DigitGroup>& groups, int position)
{
    for (int i = static_cast<int>(groups.size()) - 1; i >= 0; --i) {
        const DigitGroup& group = groups[static_cast<std::size_t>(i)];
        if (group.start <= position)
            return position < group.start + group.length ? i : -1;
    }
    return -1;
}

QString wildcarded(QString name, const DigitGroup& group)
{
    return name.replace(group.start, group.length, QString(group.length, QLatin1Char('?')));
}

QString sequencePattern(const QString& name, const std::vector<DigitGroup>& groups,
                        const SequenceFields& fields)
{
    QString pattern = name;
    for (const DigitGroup& group : chosenGroups(groups, {fields.time, fields.slice, fields.channel}))
        pattern = wildcarded(pattern, group);
    return pattern;
}

SequenceStacks groupSequence(const QStringList& names, const std::vector<DigitGroup>& groups,
                             const SequenceFields& fields)
{
    std::vector<QStringList> times = {names};
    if (fields.time >= 0)
        times = grouped(names, chosenGroups(groups, {fields.slice, fields.channel}));
    SequenceStacks stacks;
    for (std::size_t time = 0; time < times.size(); ++time) {
        std::vector<QStringList> channels = {times[time]};
        if (fields.channel >= 0)
            channels = grouped(times[time], chosenGroups(groups, {fields.slice}));
        const int count = static_cast<int>(channels.size());
        if (time == 0)
            stacks.channels = std::max(1, count);
        if (count != stacks.channels && stacks.unevenTimePoint < 0) {
            stacks.unevenTimePoint = static_cast<int>(time);
            stacks.unevenChannels = count;
        }
        stacks.lists.insert(stacks.lists.end(), channels.begin(), channels.end());
    }
    return stacks;
}

} // namespace tirn
