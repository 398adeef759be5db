#pragma once

#include <zuSceneGraph/objects/zuPointer.h>

#include <string>
#include <vector>

namespace zu {
class zuRttiInterface;
class zuStreamVersion;
} // namespace zu

namespace zusg {

// Builds the object of one record of a 6.0+ stream on its own.
//
// The record's bytes, preceded by a "Top Level" marker, are loaded by a stream of the
// file's version: the record's factory builds the object, which is then the stream's
// single top-level object. References to other records find nothing to link to and read
// as null. `record` runs from the record's type name to its end.
//
// Null, with the reason in `failure`, when the record does not load on its own; the
// library's messages of that load are kept out of the tool's output.
zu::zuPointer<zu::zuRttiInterface> loadRecordAlone(const std::vector<char>& record, const zu::zuStreamVersion& version,
                                                   std::string& failure);

} // namespace zusg
