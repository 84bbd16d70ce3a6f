#include "glsupport/glrecorder.h"

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <sstream>

namespace tirn::test {

namespace {

std::mutex mutex;
std::vector<GlCall> recorded;
GlTable next;
GLuint lastName = 0;
std::deque<GLenum> errorQueue;
bool namesRefused = false;
bool listsRefused = false;

template <typename T>
std::string describe(T value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    if constexpr (std::is_pointer_v<T>)
        text << (value == nullptr ? "null" : "data");
    else
        text << +value;
    return text.str();
}

std::size_t bytesOfTexel(long long format, long long type)
{
    const std::size_t components = format == GL_RGBA ? 4 : format == GL_HILO_NV ? 2 : 1;
    switch (type) {
    case GL_UNSIGNED_BYTE:
        return components;
    case GL_UNSIGNED_SHORT:
        return components * 2;
    case GL_FLOAT:
        return components * 4;
    default:
        return 0;
    }
}

/// Where a call that sends texels has their sizes; the format and the type follow each other.
struct SendingCall
{
    std::vector<std::size_t> sizes;
    std::size_t format;
};

const std::map<std::string, SendingCall>& sendingCalls()
{
    static const std::map<std::string, SendingCall> all = {
        {"TexImage1D", {{3}, 5}},          {"TexSubImage1D", {{3}, 4}},
        {"TexImage2D", {{3, 4}, 6}},       {"TexSubImage2D", {{4, 5}, 6}},
        {"TexImage3DEXT", {{3, 4, 5}, 7}}, {"TexSubImage3DEXT", {{5, 6, 7}, 8}},
        {"ColorTableEXT", {{2}, 3}},       {"DrawPixels", {{0, 1}, 2}}};
    return all;
}

std::size_t bytesSent(const GlCall& call)
{
    if (call.name == "ProgramStringARB")
        return static_cast<std::size_t>(call.number(2));
    const auto known = sendingCalls().find(call.name);
    if (known == sendingCalls().end())
        return 0;
    std::size_t bytes =
        bytesOfTexel(call.number(known->second.format), call.number(known->second.format + 1));
    for (const std::size_t size : known->second.sizes)
        bytes *= static_cast<std::size_t>(call.number(size));
    return bytes;
}

template <typename T>
void keepContents(GlCall& call, T value)
{
    if constexpr (std::is_pointer_v<T>) {
        if (value == nullptr)
            return;
    }
    if constexpr (std::is_same_v<T, const GLdouble*>)
        call.values.assign(value, value + (call.name == "ClipPlane" ? 4 : 16));
    else if constexpr (std::is_same_v<T, const GLfloat*>)
        call.values.assign(value, value + (call.name == "MultMatrixf" ? 16 : 4));
    else if constexpr (std::is_same_v<T, const GLuint*>)
        call.values.assign(value, value + call.number(0));
    else if constexpr (std::is_same_v<T, const void*>)
        call.bytes.assign(static_cast<const std::uint8_t*>(value),
                          static_cast<const std::uint8_t*>(value) + bytesSent(call));
}

template <typename... Arguments>
void note(const char* name, Arguments... arguments)
{
    GlCall call{name, {describe(arguments)...}};
    (keepContents(call, arguments), ...);
    const std::scoped_lock lock(mutex);
    recorded.push_back(std::move(call));
}

template <typename Result>
struct Stub
{
    static Result value() { return Result{}; }
};
template <>
struct Stub<void>
{
    static void value() {}
};

struct Noter
{
    const char* name;
    template <typename... Arguments>
    void operator()(Arguments... arguments) const
    {
        note(name, arguments...);
    }
};

#define TIRN_RECORD(result, name, parameters, arguments)                                                     \
    result APIENTRY record##name parameters                                                                  \
    {                                                                                                        \
        Noter{#name} arguments;                                                                              \
        if (next.name != nullptr)                                                                            \
            return next.name arguments;                                                                      \
        return Stub<result>::value();                                                                        \
    }
TIRN_GL_ENTRIES(TIRN_RECORD)
#undef TIRN_RECORD

void APIENTRY nameTextures(GLsizei count, GLuint* names)
{
    for (GLsizei i = 0; i < count; ++i)
        names[i] = namesRefused ? 0 : ++lastName;
}

GLuint APIENTRY nameLists(GLsizei count)
{
    if (namesRefused)
        return 0;
    const GLuint first = lastName + 1;
    lastName += static_cast<GLuint>(count);
    return first;
}

GLboolean APIENTRY anyListExists(GLuint list) { return list != 0 && !listsRefused ? GL_TRUE : GL_FALSE; }

GLenum APIENTRY nextError()
{
    const std::scoped_lock lock(mutex);
    if (errorQueue.empty())
        return GL_NO_ERROR;
    const GLenum error = errorQueue.front();
    errorQueue.pop_front();
    return error;
}

} // namespace

std::string GlCall::text() const
{
    std::string all = name + "(";
    for (std::size_t i = 0; i < arguments.size(); ++i)
        all += (i == 0 ? "" : ", ") + arguments[i];
    return all + ")";
}

GlRecorder::GlRecorder(Mode mode)
{
    next = mode == Mode::Forward ? gl() : GlTable{};
    if (mode == Mode::StandAlone) {
        lastName = 0;
        next.GenTextures = &nameTextures;
        next.GenProgramsARB = &nameTextures;
        next.GenLists = &nameLists;
        next.IsList = &anyListExists;
        next.GetError = &nextError;
    }
#define TIRN_USE(result, name, parameters, arguments) m_table.name = &record##name;
    TIRN_GL_ENTRIES(TIRN_USE)
#undef TIRN_USE
    clear();
    queueErrors({});
    refuseNames(false);
    refuseLists(false);
    m_scope = std::make_unique<GlTableScope>(m_table);
}

GlRecorder::~GlRecorder() = default;

std::vector<GlCall> GlRecorder::calls() const
{
    const std::scoped_lock lock(mutex);
    return recorded;
}

std::vector<GlCall> GlRecorder::callsOf(const std::string& name) const
{
    std::vector<GlCall> found;
    for (GlCall& call : calls()) {
        if (call.name == name)
            found.push_back(std::move(call));
    }
    return found;
}

std::vector<std::string> GlRecorder::texts(const std::vector<std::string>& names) const
{
    std::vector<std::string> texts;
    for (const GlCall& call : calls()) {
        if (names.empty() || std::find(names.begin(), names.end(), call.name) != names.end())
            texts.push_back(call.text());
    }
    return texts;
}

int GlRecorder::count(const std::string& name) const { return static_cast<int>(callsOf(name).size()); }

void GlRecorder::clear()
{
    const std::scoped_lock lock(mutex);
    recorded.clear();
}

void GlRecorder::queueErrors(const std::vector<GLenum>& errors)
{
    const std::scoped_lock lock(mutex);
    errorQueue.assign(errors.begin(), errors.end());
}

void GlRecorder::refuseNames(bool refuse) { namesRefused = refuse; }

void GlRecorder::refuseLists(bool refuse) { listsRefused = refuse; }

} // namespace tirn::test
