#pragma once

// The text form of an object's fields, as `zusg dump` prints them below the object's record.
// The classes describe their fields themselves (zuRttiInterface::Describe); this visitor
// only lays them out.

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <Wm4/Wm4Vector3.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace zusg {

// Numbers in their shortest form that reads back to the same value ("1", "2.5", "1e-07").
std::string number(float value);
std::string number(double value);
// "(x y z)".
std::string vector3(const Wm4::Vector3<float>& value);
// The text in double quotes, with quotes and backslashes escaped, control and non-ASCII
// bytes as \xNN, and anything past `maxLength` bytes replaced by "...".
std::string quotedText(const std::string& text, size_t maxLength = 64);
// The enumerator's name, or "UNKNOWN (value)" when the class's look-up answers "UNKNOWN"
// for a value outside the enumeration.
std::string enumerator(const char* name, int value);

// Writes the fields an object reports as lines without indentation:
//
//     name "wheel", controllers 0                        a group of fields
//     frame: location (0 0 5), D (0 0 -1), ...           a named group
//     culling CULL_DYNAMIC                               a field on its own
//     children 10: 0x... 0x... ... 0x... ...             a list: its quantity, the first eight
//     Entries 9:                                         a list of groups: one line each
//       [0] Name "first", First 1, ...
//       ... (1 more)
//
// Groups and lists inside a group stay on its line, in parentheses. Numbers that make one
// value read "(1 2 3)", the rows of a matrix set apart by "; ". No line starts with a
// digit, so that the dump's record lines stay the only ones that do.
class FieldText : public zu::zuFieldVisitor {
public:
    // How a reference reads: the identifier of the referenced record, "null", ...
    using ReferenceLabel = std::function<std::string(const zu::zuRttiInterface*)>;

    // Elements of a list shown before the rest is counted.
    static constexpr int64_t SHOWN_ELEMENTS = 8;

    FieldText(std::ostream& out, ReferenceLabel label) : mOut(out), mLabel(std::move(label)) {}

    void BeginGroup(const char* name) override;
    void EndGroup() override;
    int64_t BeginList(const char* name, int64_t quantity) override;
    void EndList() override;
    void Flag(const char* name, bool value) override;
    void Integer(const char* name, int64_t value) override;
    void Mask(const char* name, uint64_t value, int bits) override;
    void Number(const char* name, float value) override;
    void Number(const char* name, double value) override;
    void Text(const char* name, const std::string& value) override;
    void Enumerator(const char* name, int value, const char* enumerator) override;
    void Numbers(const char* name, const float* values, int count, int rowLength) override;
    void Numbers(const char* name, const double* values, int count, int rowLength) override;
    void Reference(const char* name, const zu::zuRttiInterface* object) override;
    // "Position 3 at 0", "TCoord[1] 2 at 24".
    void Channel(const char* name, int unit, int channels, int offset) override;

private:
    struct Scope {
        bool list = false;
        bool inParentheses = false;  // a group or list inside a group's line
        bool linePerElement = false; // a list whose elements are groups at the start of a line
        bool first = true;           // nothing written inside it yet
        int64_t quantity = 0;
        int64_t shown = 0;
        int64_t elements = 0;
    };

    // What goes before a field, a group or a list at the current place.
    void separate();
    void field(const char* name, const std::string& value);
    template <class Real> void numbers(const char* name, const Real* values, int count, int rowLength);
    void endLineIfOutermost();

    std::ostream& mOut;
    ReferenceLabel mLabel;
    std::vector<Scope> mScopes;
};

} // namespace zusg
