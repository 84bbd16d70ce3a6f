#include "gl/glstate.h"

#include <QString>

#include "base/log.h"

namespace tirn {

GLenum reportGlErrors(const char* label)
{
    const GLenum first = gl().GetError();
    if (first == GL_NO_ERROR)
        return first;
    QString text = QString::asprintf("%s: %x", label, first);
    // A lost context reports errors for ever.
    for (int i = 0; i < 16; ++i) {
        const GLenum next = gl().GetError();
        if (next == GL_NO_ERROR)
            break;
        text += QString::asprintf("GL Error number: 0x%x", next);
    }
    log(LogLevel::Debug, text);
    return first;
}

} // namespace tirn
