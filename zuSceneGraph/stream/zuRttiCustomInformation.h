#pragma once

namespace zu {

// Data a class attaches to one of its objects for the length of a save or load, to pass
// between its passes. The stream owns and deletes it.
class zuRttiCustomInformation {
public:
    virtual ~zuRttiCustomInformation() = default;
};

} // namespace zu
