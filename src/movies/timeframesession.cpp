#include "movies/timeframesession.h"

#include <algorithm>

#include "base/log.h"
#include "movies/keyframesession.h"
#include "session/attributenumber.h"

namespace tirn {

namespace {

void saveVector(const Action& action, QDomElement& element)
{
    element.setAttribute("x", attributeNumber(action.x));
    element.setAttribute("y", attributeNumber(action.y));
    element.setAttribute("z", attributeNumber(action.z));
}

void savePalettes(const Action& action, QDomElement& element, QDomDocument& document)
{
    element.setAttribute("channels", static_cast<int>(action.paletteActions.size()));
    for (std::size_t c = 0; c < action.paletteActions.size(); ++c) {
        QDomElement channel = document.createElement("palchannel");
        channel.setAttribute("num", static_cast<int>(c));
        // The palette that follows is not kept: both attributes hold the action.
        channel.setAttribute("after", action.paletteActions[c]);
        channel.setAttribute("action", action.paletteActions[c]);
        element.appendChild(channel);
    }
}

QDomElement saveAction(const Action& action, QDomDocument& document)
{
    QDomElement element = document.createElement("action");
    element.setAttribute("type", action.name());
    switch (action.type) {
    case ActionType::Rotation:
    case ActionType::Scale:
    case ActionType::Translation:
        saveVector(action, element);
        return element;
    case ActionType::Palette:
        savePalettes(action, element, document);
        return element;
    case ActionType::PassThrough:
        saveVector(action, element);
        element.setAttribute("passtype", static_cast<int>(action.passType));
        return element;
    case ActionType::Rocking:
        saveVector(action, element);
        element.setAttribute("rotations", action.rotations);
        return element;
    case ActionType::Custom:
        element.setAttribute("frames", static_cast<int>(action.keyFrames.size()));
        for (const KeyFrame& frame : action.keyFrames)
            element.appendChild(saveKeyFrame(frame, document));
        return element;
    case ActionType::TimePoints:
        element.setAttribute("fptp", action.framesPerTimePoint);
        element.setAttribute("start", action.start);
        element.setAttribute("end", action.end);
        return element;
    }
    logWarning("trying to toElement unknown action");
    return element;
}

/// One of the first seven types by its name; a rotation for any other text.
ActionType typeNamed(const QString& name)
{
    for (int type = 0; type < static_cast<int>(ActionType::TimePoints); ++type) {
        Action action;
        action.type = static_cast<ActionType>(type);
        if (action.name() == name)
            return action.type;
    }
    return ActionType::Rotation;
}

PassType passTypeOf(int number)
{
    return number >= 0 && number <= static_cast<int>(PassType::SinglePlane) ? static_cast<PassType>(number)
                                                                            : PassType::TopToBottom;
}

Action readAction(const QDomElement& element)
{
    Action action;
    action.type = typeNamed(element.attribute("type", "Rotation"));
    action.rotations = element.attribute("rotations", "0").toInt();
    action.x = element.attribute("x", "0").toDouble();
    action.y = element.attribute("y", "0").toDouble();
    action.z = element.attribute("z", "0").toDouble();
    action.passType = passTypeOf(element.attribute("passtype", "0").toInt());
    action.start = element.attribute("start", "-1").toInt();
    action.end = element.attribute("end", "-1").toInt();
    if (action.type == ActionType::Custom)
        action.keyFrames = readKeyFrames(element);
    if (action.type != ActionType::Palette)
        return action;
    for (QDomElement channel = element.firstChildElement("palchannel"); !channel.isNull();
         channel = channel.nextSiblingElement("palchannel")) {
        action.paletteActions.push_back(channel.attribute("action", "0").toInt());
        action.paletteAfter.push_back(channel.attribute("after", "0").toInt());
    }
    return action;
}

} // namespace

QDomElement saveTimeFrame(const TimeFrame& timeFrame, QDomDocument& document)
{
    QDomElement element = document.createElement("timeframe");
    element.setAttribute("seconds", timeFrame.seconds);
    for (const Action& action : timeFrame.actions)
        element.appendChild(saveAction(action, document));
    return element;
}

TimeFrame readTimeFrame(const QDomElement& element)
{
    TimeFrame timeFrame;
    timeFrame.seconds = std::clamp(element.attribute("seconds", "1").toInt(), kLeastSeconds, kMostSeconds);
    for (QDomElement child = element.firstChildElement("action"); !child.isNull();
         child = child.nextSiblingElement("action"))
        timeFrame.actions.push_back(readAction(child));
    return timeFrame;
}

std::vector<TimeFrame> readTimeFrames(const QDomElement& parent)
{
    std::vector<TimeFrame> timeFrames;
    for (QDomElement child = parent.firstChildElement("timeframe"); !child.isNull();
         child = child.nextSiblingElement("timeframe"))
        timeFrames.push_back(readTimeFrame(child));
    return timeFrames;
}

} // namespace tirn
