// Metrics as text: the text format 0.0.4 of Prometheus, or OpenMetrics 1.0.0.
#pragma once

#include "cimhost/byte_buffer.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace cimhost::metrics {

enum class Format { prometheus, openMetrics };

/// The value of Content-Type for a format.
std::string_view contentType(Format format);

/// What a client prefers by its field Accept (RFC 9110, 12.5.1); the text format 0.0.4 where it says nothing.
Format preferredFormat(std::string_view accept);

enum class Type { gauge, counter, info, histogram };

/// Labels of a sample, each with an escaped value; what is no UTF-8 reads '?'.
class Labels {
public:
    Labels& add(std::string_view name, std::string_view value);

    /// Without braces, such as: serial="A00001",port="1"
    [[nodiscard]] const std::string& text() const { return rendered; }

private:
    std::string rendered;
};

/// Writes families one after the other. A family is announced by its first sample, so one without any is left out.
class Exposition {
public:
    Exposition(ByteBuffer& target, Format written) : buffer(target), format(written) {}

    /// Of a counter or an info the name comes without its "_total" or "_info". Name and help are literals.
    Exposition& family(std::string_view name, Type type, std::string_view help);

    /// A sample of the family. A number that is none is left out.
    void sample(const Labels& labels, double value);
    void sample(const Labels& labels, std::uint64_t value);

    /// Parts of a histogram: how many so far are not above the limit, which is written as it is; all; their sum.
    void bucket(const Labels& labels, std::string_view limit, std::uint64_t soFar);
    void countAndSum(const Labels& labels, std::uint64_t count, double sum);

    /// Behind the last sample.
    void end();

private:
    void announce();
    void write(std::string_view suffix, std::string_view labels, std::string_view value);
    [[nodiscard]] std::string_view suffix() const;

    ByteBuffer& buffer;
    const Format format;
    std::string_view name;
    std::string_view help;
    Type type = Type::gauge;
    bool isAnnounced = false;
};

} // namespace cimhost::metrics
