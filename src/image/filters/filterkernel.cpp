#include "image/filters/filterkernel.h"

#include <algorithm>
#include <cmath>

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace tirn {

namespace {

/// More text than the largest kernel needs.
constexpr qint64 kLargestFile = qint64{32} << 20;

/// False for what is no number, too.
bool isWeight(double weight) { return std::abs(weight) <= FilterKernel::kHeaviest; }

} // namespace

bool FilterKernel::isValid() const
{
    return width >= 1 && height >= 1 && width <= kWidest && height <= kWidest &&
           weights.size() == static_cast<std::size_t>(width) * static_cast<std::size_t>(height) &&
           std::all_of(weights.begin(), weights.end(), isWeight);
}

double FilterKernel::divisor() const
{
    double sum = 0;
    for (const double weight : weights)
        sum += weight;
    return sum != 0 ? sum : 1;
}

FilterKernel kernelFromText(const QString& text, QString& error)
{
    static const QRegularExpression separators(QStringLiteral("[\\s,;]+"));
    FilterKernel kernel;
    const QStringList lines = text.split('\n');
    for (int line = 0; line < lines.size(); ++line) {
        const QStringList numbers = lines[line].split(separators, Qt::SkipEmptyParts);
        if (numbers.isEmpty())
            continue;
        if (kernel.height == 0)
            kernel.width = static_cast<int>(numbers.size());
        if (numbers.size() != kernel.width) {
            error = QStringLiteral("line %1 has %2 numbers, not %3")
                        .arg(line + 1)
                        .arg(numbers.size())
                        .arg(kernel.width);
            return {};
        }
        for (const QString& number : numbers) {
            bool isNumber = false;
            kernel.weights.push_back(number.toDouble(&isNumber));
            if (!isNumber || !isWeight(kernel.weights.back())) {
                error = QStringLiteral("line %1: '%2' is not a weight").arg(line + 1).arg(number);
                return {};
            }
        }
        ++kernel.height;
    }
    if (kernel.isValid())
        return kernel;
    error = kernel.height == 0
                ? QStringLiteral("there are no numbers")
                : QStringLiteral("there are more than %1 rows or columns").arg(FilterKernel::kWidest);
    return {};
}

FilterKernel kernelFromFile(const QString& name, QString& error)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return {};
    }
    if (file.size() > kLargestFile) {
        error = QStringLiteral("the file is too large for a kernel");
        return {};
    }
    return kernelFromText(QString::fromUtf8(file.readAll()), error);
}

} // namespace tirn
