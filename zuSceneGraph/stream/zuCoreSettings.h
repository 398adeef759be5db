#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>

#include <string>
#include <vector>

namespace zu {

// A persistable record of configuration values kept in an object stream. The code that
// uses the settings reads and writes the public members directly; this class only
// creates, copies, saves and loads them. It carries no name and no controllers.
//
// Two objects compare equal whatever their values, and a clone keeps its own values:
// only the object part takes part in Equals and Clone.
class zuCoreSettings : public zuUnnamedObject {
public:
    static const zuRtti TYPE;

    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory() { RegisterClass<zuCoreSettings>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // A named entry: three numbers and a flag.
    struct Entry {
        std::string Name;
        float First = 0.0f;
        float Second = 0.0f;
        float Third = 0.0f;
        bool Flag = false;
    };
    // A named record: two strings and three values.
    struct Record {
        std::string First;
        std::string Second;
        unsigned int Values[3] = {0, 0, 0};
    };

    zuCoreSettings() = default;
    zuCoreSettings(const zuCoreSettings& other) = default;
    // Copies every value (the copy keeps its own identity).
    zuCoreSettings& operator=(const zuCoreSettings& other) = default;

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

    std::vector<Entry> Entries;
    std::vector<std::string> Strings;
    int S1 = 100;
    unsigned int S2 = 0;
    float S3 = 0.001f;
    int S4 = 1;
    float S5 = 1.0f;
    int S6 = 0;
    bool S7 = false;
    std::vector<Record> Records;
    bool H1 = true;
    bool H2 = false;
    bool H3 = false;
    bool H4 = true;
    unsigned int J1 = 0;
    unsigned int J2 = 0;
    unsigned int J3 = 0;
    unsigned int J4 = 0;
    unsigned int J5 = 5;
    unsigned int J6 = 30;
    // Not persisted: a loaded object keeps its default.
    unsigned int K = 2;
    unsigned int Width1 = 800;
    unsigned int Height1 = 600;
    unsigned int Width2 = 320;
    unsigned int Height2 = 240;
};

} // namespace zu
