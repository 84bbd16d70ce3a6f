#pragma once

#include <QLocale>
#include <QString>

namespace tirn::test {

/// A number as people of the present locale type it.
inline QString typedNumber(QString number) { return number.replace('.', QLocale().decimalPoint()); }

} // namespace tirn::test
