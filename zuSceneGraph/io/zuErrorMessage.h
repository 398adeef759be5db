#pragma once

#include <cstdint>
#include <string>

namespace zu {

// One report of a driver, an error or a warning: where in the input it arose (`line`: the
// line of a text file, the byte offset in a binary one, -1 when no place applies), its kind
// (`code`, chosen by the driver) and its text.
//
// Built as (code, line, text), while the fields are kept as line, code, text: reports sort
// by place first. Ordered by line, then code, then text (byte-wise).
class zuErrorMessage {
public:
    zuErrorMessage(int64_t code, int64_t line, std::string text);

    bool operator<(const zuErrorMessage& other) const;
    bool operator==(const zuErrorMessage& other) const;
    bool operator!=(const zuErrorMessage& other) const { return !(*this == other); }

    int64_t line;
    int64_t code;
    std::string text;
};

} // namespace zu
