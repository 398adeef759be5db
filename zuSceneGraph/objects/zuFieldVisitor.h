#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zu {

class zuRttiInterface;
template <class Real> class zuGenericTransformation;

// Receives the fields of an object as its class describes them (zuRttiInterface::Describe):
// tools that show, compare or export objects implement it once for every class.
//
// Every call names its field; `name` is null for the elements of a list. Fields that belong
// together come between BeginGroup and EndGroup (a text form puts them on one line), and
// groups and lists may nest. Names are the field names the classes use, fixed texts.
class zuFieldVisitor {
public:
    virtual ~zuFieldVisitor() = default;

    virtual void BeginGroup(const char* name) = 0;
    virtual void EndGroup() = 0;
    // A list of `quantity` elements. The answer is how many of the first elements the
    // visitor wants: the describer visits that many (never more than `quantity`), each one
    // value or one group with a null name, then calls EndList.
    virtual int64_t BeginList(const char* name, int64_t quantity) = 0;
    virtual void EndList() = 0;

    virtual void Flag(const char* name, bool value) = 0;
    virtual void Integer(const char* name, int64_t value) = 0;
    // A word of bits (a mask, a flags word) of `bits` bits, best read in hexadecimal.
    virtual void Mask(const char* name, uint64_t value, int bits) = 0;
    virtual void Number(const char* name, float value) = 0;
    virtual void Number(const char* name, double value) = 0;
    virtual void Text(const char* name, const std::string& value) = 0;
    // A value of an enumeration with its enumerator's name: the class's name look-up, which
    // answers "UNKNOWN" for a value outside the enumeration (files keep such values as read).
    virtual void Enumerator(const char* name, int value, const char* enumerator) = 0;
    // Numbers that make one value, row by row: a vector or a colour is one row (`rowLength`
    // = `count`), a matrix `count / rowLength` rows of `rowLength`, a plane its normal and
    // then its constant. Wm4 values convert to their number arrays.
    virtual void Numbers(const char* name, const float* values, int count, int rowLength) = 0;
    virtual void Numbers(const char* name, const double* values, int count, int rowLength) = 0;
    // A reference to another object, or null.
    virtual void Reference(const char* name, const zuRttiInterface* object) = 0;

    // One channel group of a vertex layout: `unit` is -1 for a group that has no units. By
    // default a group of the unit, the channel count and the byte offset.
    virtual void Channel(const char* name, int unit, int channels, int offset);
    // By default the group `name`: the three flags, the matrix, the translation and the scale.
    virtual void Transformation(const char* name, const zuGenericTransformation<float>& value);

    // The group `name` of a frame: its location and its D, U and R axes, three numbers each.
    void Frame(const char* name, const float* location, const float* d, const float* u, const float* r);

    // A value of an enumeration whose enumerators are named by `names`, from 0 on.
    template <std::size_t N> void EnumeratorOf(const char* name, int value, const char* const (&names)[N])
    {
        Enumerator(name, value, value >= 0 && static_cast<std::size_t>(value) < N ? names[value] : "UNKNOWN");
    }
    // A list of `quantity` elements: `visitElement(i)` reports element i, for as many of the
    // first ones as the visitor wants.
    template <class VisitElement> void List(const char* name, int64_t quantity, VisitElement visitElement)
    {
        const int64_t wanted = BeginList(name, quantity);
        for (int64_t i = 0; i < wanted && i < quantity; ++i)
            visitElement(i);
        EndList();
    }
    // A list of references: `at(i)` is the i-th object.
    template <class At> void References(const char* name, int64_t quantity, At at)
    {
        List(name, quantity, [&](int64_t i) { Reference(nullptr, at(i)); });
    }
};

} // namespace zu
