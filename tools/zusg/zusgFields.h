#pragma once

// The field printers of `zusg dump`: below a record's line, the fields of the object the
// record holds. A printer takes the object its record's factory built and writes one or
// more lines, without indentation (the dump indents them under the record). No line a
// printer writes starts with a digit, so the record lines stay the only ones that do.
//
// The printers are registered by family, one source file each (zusgFieldsArrays.cpp,
// zusgFieldsStates.cpp, ...): a family of classes joins by adding its registration
// function below and one line to the table in zusgFields.cpp.

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4Vector3.h>

#include <ostream>
#include <string>
#include <unordered_map>

namespace zu {
class zuObject;
class zuRtti;
class zuRttiInterface;
template <class Real> class zuGenericTransformation;
} // namespace zu

namespace zusg {

// Writes the fields of `object`, which is of the type the printer was registered for (or
// derives from it).
using FieldPrinter = void (*)(const zu::zuRttiInterface& object, std::ostream& out);

class FieldRegistry {
public:
    struct Entry {
        const zu::zuRtti* type = nullptr;
        FieldPrinter print = nullptr;
    };

    // Registers the printer under the type's persisted name; a second printer for the
    // same name replaces the first.
    void add(const zu::zuRtti& type, FieldPrinter print);
    // The printer of a persisted type name; null when no family knows the type.
    const Entry* find(const std::string& typeName) const;
    size_t size() const { return mEntries.size(); }

private:
    std::unordered_map<std::string, Entry> mEntries;
};

// The printers of every family, registered on the first call.
const FieldRegistry& fieldPrinters();

// The families (one source file each).
void addArrayFields(FieldRegistry& registry);         // the 21 shared arrays
void addSettingsFields(FieldRegistry& registry);      // zuCoreSettings
void addStateFields(FieldRegistry& registry);         // the six render states
void addCameraLightFields(FieldRegistry& registry);   // zuCamera, zuLight

// Value texts shared by the printers (zusgFieldsValues.cpp). Numbers are written in
// their shortest form that reads back to the same value ("1", "2.5", "1e-07").
std::string number(float value);
std::string number(double value);
// "true" or "false".
std::string flag(bool value);
// The enumerator's name, or "UNKNOWN (value)" when the class's name look-up answers
// "UNKNOWN" for a value outside the enumeration.
std::string enumerator(const char* name, int value);
// "(x y z)" and "(r g b)".
std::string vector3(const Wm4::Vector3<float>& value);
std::string colour(const Wm4::ColorRGB& value);
// The text in double quotes, with control and non-ASCII bytes escaped as \xNN and
// anything past `maxLength` bytes replaced by "...".
std::string quotedText(const std::string& text, size_t maxLength = 64);

// The object part of a named object: its name and its controllers. A controller is a
// reference to another record: where it reads as null (a record loaded on its own), the
// line says so.
void printNamedObjectPart(const zu::zuObject& object, std::ostream& out);

// A transformation value, as later classes hold them (nodes, keyframes): a first line
// "LABEL: " and the flags, then indented lines with the matrix rows, the translation
// and the scale.
void printTransformation(const zu::zuGenericTransformation<float>& transformation, const std::string& label,
                         std::ostream& out);

} // namespace zusg
