#pragma once

namespace zu {

// The object-stream version written when the caller names none: the newest format.
extern const int zuMajorOutputStreamVersion;
extern const int zuMinorOutputStreamVersion;

} // namespace zu
