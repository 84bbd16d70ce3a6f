#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <QByteArray>

#include "gl/gltable.h"

namespace tirn::test {

/// One GL call: the name without "gl", and its arguments as text.
struct GlCall
{
    std::string name;
    std::vector<std::string> arguments;
    /// The numbers that a pointer led to: a matrix, a plane, a list of names.
    std::vector<double> values = {};
    /// The texels, table or text that were sent.
    std::vector<std::uint8_t> bytes = {};

    /// "BindTexture(3553, 7)".
    std::string text() const;
    long long number(std::size_t argument) const { return std::stoll(arguments.at(argument)); }
    /// Whatever the locale.
    double real(std::size_t argument) const
    {
        return QByteArray::fromStdString(arguments.at(argument)).toDouble();
    }
};

/// Records every GL call of the program while it lives. One at a time.
class GlRecorder
{
public:
    enum class Mode {
        Forward,    ///< the driver is called, too
        StandAlone, ///< no driver: names are counted, lists exist, there are no errors
    };
    explicit GlRecorder(Mode mode);
    ~GlRecorder();
    GlRecorder(const GlRecorder&) = delete;
    GlRecorder& operator=(const GlRecorder&) = delete;

    std::vector<GlCall> calls() const;
    std::vector<GlCall> callsOf(const std::string& name) const;
    /// The calls as text, only those of the given names when there are any.
    std::vector<std::string> texts(const std::vector<std::string>& names = {}) const;
    int count(const std::string& name) const;
    void clear();
    /// Lets an entry look as if the driver lacked it.
    GlTable& table() { return m_table; }

    /// What a driver that is not there answers: the errors one after the other, no names, no lists.
    void queueErrors(const std::vector<GLenum>& errors);
    void refuseNames(bool refuse);
    void refuseLists(bool refuse);

private:
    GlTable m_table;
    std::unique_ptr<GlTableScope> m_scope;
};

} // namespace tirn::test
