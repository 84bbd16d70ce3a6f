#pragma once

#include <functional>

#include <QObject>

class QWidget;

namespace tirn {

/// Finds out where one step of the user's ends and another begins: a button that is held, a key that repeats,
/// a row of digits are one step each.
class StepEnds : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Watches a spin box, or anything else that changes values by itself while a button is down.
    void watch(QWidget* widget);

Q_SIGNALS:
    void ended();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace tirn
