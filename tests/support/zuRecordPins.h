#pragma once

// Exact bytes of saved records, written compactly: a pin is the text of a whole saved stream,
// one record to a line, in which
//   0a ff ...   are bytes in hex,
//   #n ~f =d    are a 4-byte integer, a float and a double,
//   'text'      is a string primitive (its 4-byte length, then the characters),
//   <k>         is the 8-byte identity of the k-th object the save wrote (0 first),
//   |           ends a record.
// Spaces are ignored. checkPin saves the top-level objects at the pin's version and compares
// the bytes, loads the pin back (the copies must equal the objects and save to the same pin),
// and loads every cut of it: a cut between records loads the records before it, any other
// cut fails.

#include "support/zuTestObjects.h"

#include <functional>
#include <string>
#include <vector>

namespace zu::test {

struct zuRecordPin {
    const char* what;
    zuStreamVersion version;
    // The top-level objects, in order (built afresh for every check).
    std::function<std::vector<zuPointer<zuRttiInterface>>()> make;
    const char* text;
    // False where a load does not keep every field as it was (an old bound read back as the
    // box about it), so that the copies save otherwise.
    bool savesBackAlike = true;
};

// The pin of what saving `topLevel` at `version` writes; empty when the save fails.
std::string pinOf(const std::vector<zuPointer<zuRttiInterface>>& topLevel, zuStreamVersion version);

::testing::AssertionResult checkPin(const zuRecordPin& pin);

// The bytes a pin's text stands for, <k> read as the identity 0x1000 * (k + 1): records
// written by hand, to be loaded.
std::vector<char> pinBytes(const std::string& text);

// What loading `bytes` at `version` hands out: the top-level objects; empty when it fails.
std::vector<zuPointer<zuRttiInterface>> loadPin(std::vector<char> bytes, zuStreamVersion version = {6, 32});

} // namespace zu::test
