#pragma once

#include <QString>
#include <QStringList>

namespace tirn {

/// The names, out of those of a folder, that look like the first of a series of stacks: with digits where its
/// base name has digits, one for one, and any white space where it has some. In the order in which they come.
QStringList matchingSeries(const QString& firstName, const QStringList& names);

/// The times of `count` rows that go on as the first two do, as "hh:mm:ss", with milliseconds where the first
/// has some. Nothing when one of the two is no time in ISO form.
QStringList continuedTimes(const QString& first, const QString& second, int count);

} // namespace tirn
