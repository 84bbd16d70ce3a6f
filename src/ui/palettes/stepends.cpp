#include "ui/palettes/stepends.h"

#include <QKeyEvent>
#include <QWidget>

namespace tirn {

namespace {

/// Keys that step a number, as against those that type one.
bool isStepKey(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown ||
           key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

void StepEnds::watch(QWidget* widget)
{
    widget->installEventFilter(this);
    // The editor of a spin box gets some of its events.
    for (QWidget* child : widget->findChildren<QWidget*>())
        child->installEventFilter(this);
}

bool StepEnds::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::FocusIn:
    case QEvent::Wheel:
        Q_EMIT ended();
        break;
    case QEvent::KeyPress: {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (!key->isAutoRepeat() && isStepKey(key->key()))
            Q_EMIT ended();
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tirn
