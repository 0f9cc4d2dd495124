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

/// The format that a client prefers by its field Accept (RFC 9110, 12.5.1); without a preference, the text format
/// 0.0.4.
Format preferredFormat(std::string_view accept);

enum class Type { gauge, counter, info, histogram };

/// The labels of a sample. Values are escaped; bytes that are no UTF-8 become '?'.
class Labels {
public:
    Labels& add(std::string_view name, std::string_view value);

    /// Without braces, such as: serial="A00001",port="1"
    [[nodiscard]] const std::string& text() const { return rendered; }

private:
    std::string rendered;
};

/// Writes families of metrics one after the other. The first sample of a family announces it, so a family without
/// samples is left out.
class Exposition {
public:
    Exposition(ByteBuffer& target, Format written) : buffer(target), format(written) {}

    /// Begins a family. Name and help must live as long as its samples are written.
    /// @param name of a counter or an info without "_total" or "_info"
    Exposition& family(std::string_view name, Type type, std::string_view help);

    /// Writes a sample of the family. A value that is not a finite number is left out.
    void sample(const Labels& labels, double value);
    void sample(const Labels& labels, std::uint64_t value);

    /// Writes a bucket of a histogram.
    /// @param limit written as it is
    /// @param soFar how many values are not above the limit
    void bucket(const Labels& labels, std::string_view limit, std::uint64_t soFar);
    /// Writes how many values a histogram has, and their sum.
    void countAndSum(const Labels& labels, std::uint64_t count, double sum);

    /// Ends the text. Called after the last sample.
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
