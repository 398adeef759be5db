#pragma once

#include <zuSceneGraph/objects/zuRtti.h>

#include <string>
#include <vector>

namespace zu {

class zuBaseStream;
class zuFieldVisitor;
class zuLink;

// The abstract root of every persistable class: its type record, reference counting and
// the persistence operations of the object stream. It holds no data of its own.
class zuRttiInterface {
public:
    using FactoryFunction = zuRttiInterface* (*)(zuBaseStream&);
    // Builds a default object of a class, for tools and checks that visit every class.
    using CreateFunction = zuRttiInterface* (*)();
    // Reports the fields of an object of a class to a visitor. Each class has a static
    // DescribeFields of this form, which calls its base's first and then reports the fields
    // its own level adds, in the order its record holds them; the class registers it beside
    // its factory. The object is of that class.
    using DescribeFunction = void (*)(const zuRttiInterface& object, zuFieldVisitor& visitor);

    static const zuRtti TYPE;

    // The virtual operations keep this slot order; subclasses add theirs after them.
    virtual ~zuRttiInterface() = default;
    virtual const zuRtti& GetType() const { return TYPE; }
    virtual void IncrementReferences() const {}
    virtual void DecrementReferences() const {}
    virtual int GetReferences() const { return 0; }
    // Reads the record size (from 6.0), the saved identity, and registers the link.
    virtual void Load(zuBaseStream& stream, zuLink* link);
    virtual void Link(zuBaseStream& stream, zuLink* link);
    virtual bool PostLink() { return true; }
    // Registers this object with the stream; false when it was registered already.
    virtual bool Register(zuBaseStream& stream) const;
    // Writes the type name, the record size (from 6.0) and the identity.
    virtual void Save(zuBaseStream& stream) const;
    // The exact byte count of the whole record that Save writes.
    virtual int GetDiskUsed(const zuBaseStream& stream) const;
    virtual bool Equals(const zuRttiInterface* other) const;
    // Copies this object into `target`. A concrete class first creates the target when it is
    // null (a default object of its own class), refuses a target of another class, then
    // calls its base's Clone and copies its own members; abstract classes and this root
    // only check and copy into an existing target.
    virtual bool Clone(zuRttiInterface*& target) const;

    bool IsExactly(const zuRtti& type) const { return &GetType() == &type; }
    bool IsDerived(const zuRtti& type) const { return GetType().IsDerived(type); }

    // The process-wide factory registry: persisted type name -> factory.
    static bool CreateFactoryMap();
    static void DestroyFactoryMap();
    // Keeps the first factory of a name: a second registration returns false.
    static bool RegisterFactoryFunction(const std::string& name, FactoryFunction factory,
                                        CreateFunction create = nullptr, DescribeFunction describe = nullptr);
    static void UnregisterFactoryFunction(const std::string& name);
    static FactoryFunction GetFactory(const std::string& name);
    // Null when the class registered no default constructor.
    static CreateFunction GetCreateFunction(const std::string& name);
    template <class T>
    static zuRttiInterface* CreateDefault()
    {
        return new T;
    }
    // What a concrete class T registers: its factory, its default constructor and its
    // describer (T's own, or the nearest base's when T adds no field).
    template <class T>
    static bool RegisterClass()
    {
        return RegisterFactoryFunction(T::TYPE.GetName(), T::Factory, CreateDefault<T>, T::DescribeFields);
    }
    // The registered type names in sorted order (for tools that visit every class).
    static std::vector<std::string> GetFactoryNames();
    // Null when the class registered no describer.
    static DescribeFunction GetDescribeFunction(const std::string& name);
    // Reports the fields of `object` through the describer of its class, or of its nearest
    // base class that registered one (a class the application derives and registers without
    // a describer shows its base's fields). False, reporting nothing, when there is none.
    static bool Describe(const zuRttiInterface& object, zuFieldVisitor& visitor);
};

} // namespace zu
