#include <zuSceneGraph/objects/zuRttiInterface.h>

#include <zuSceneGraph/stream/zuBaseStream.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace zu {

const zuRtti zuRttiInterface::TYPE("zuCore.zuRttiInterface", nullptr);

namespace {

struct Factory {
    zuRttiInterface::FactoryFunction load;
    zuRttiInterface::CreateFunction create;
    zuRttiInterface::DescribeFunction describe;
};

// Filled at library start before any worker thread runs, then only read.
std::unique_ptr<std::unordered_map<std::string, Factory>> factories;

const Factory* findFactory(const std::string& name)
{
    if (!factories)
        return nullptr;
    const auto entry = factories->find(name);
    return entry == factories->end() ? nullptr : &entry->second;
}

} // namespace

bool zuRttiInterface::CreateFactoryMap()
{
    if (factories)
        return false;
    factories = std::make_unique<std::unordered_map<std::string, Factory>>();
    return true;
}

void zuRttiInterface::DestroyFactoryMap()
{
    factories.reset();
}

bool zuRttiInterface::RegisterFactoryFunction(const std::string& name, FactoryFunction factory,
                                              CreateFunction create, DescribeFunction describe)
{
    if (!factories)
        CreateFactoryMap();
    return factories->emplace(name, Factory{factory, create, describe}).second;
}

void zuRttiInterface::UnregisterFactoryFunction(const std::string& name)
{
    if (factories)
        factories->erase(name);
}

zuRttiInterface::FactoryFunction zuRttiInterface::GetFactory(const std::string& name)
{
    const Factory* factory = findFactory(name);
    return factory ? factory->load : nullptr;
}

zuRttiInterface::CreateFunction zuRttiInterface::GetCreateFunction(const std::string& name)
{
    const Factory* factory = findFactory(name);
    return factory ? factory->create : nullptr;
}

std::vector<std::string> zuRttiInterface::GetFactoryNames()
{
    std::vector<std::string> names;
    if (factories)
        for (const auto& entry : *factories)
            names.push_back(entry.first);
    std::sort(names.begin(), names.end());
    return names;
}

zuRttiInterface::DescribeFunction zuRttiInterface::GetDescribeFunction(const std::string& name)
{
    const Factory* factory = findFactory(name);
    return factory ? factory->describe : nullptr;
}

bool zuRttiInterface::Describe(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    for (const zuRtti* type = &object.GetType(); type; type = type->GetBaseType())
        if (const DescribeFunction describe = GetDescribeFunction(type->GetName())) {
            describe(object, visitor);
            return true;
        }
    return false;
}

bool zuRttiInterface::Register(zuBaseStream& stream) const
{
    return stream.registerObject(this);
}

int zuRttiInterface::GetDiskUsed(const zuBaseStream& stream) const
{
    const int nameLength = static_cast<int>(std::strlen(GetType().GetName()));
    return nameLength + (stream.GetVersion() >= zuStreamVersion(6, 0) ? 16 : 12);
}

void zuRttiInterface::Save(zuBaseStream& stream) const
{
    stream.Write(GetType().GetName());
    if (stream.GetVersion() >= zuStreamVersion(6, 0))
        stream.WriteRecordSize(this);
    stream.Write(this);
}

void zuRttiInterface::Load(zuBaseStream& stream, zuLink* link)
{
    if (stream.GetVersion() >= zuStreamVersion(6, 0)) {
        int recordSize = 0;
        stream.Read(recordSize);
        stream.mRecordSize = recordSize > 0 ? static_cast<uint64_t>(recordSize) : 0;
    }
    uint64_t identifier = 0;
    stream.readValues(&identifier, 8, 1);
    stream.registerLink(identifier, link);
}

void zuRttiInterface::Link(zuBaseStream&, zuLink*)
{
}

bool zuRttiInterface::Equals(const zuRttiInterface* other) const
{
    return other && other->IsDerived(zuRttiInterface::TYPE);
}

bool zuRttiInterface::Clone(zuRttiInterface*& target) const
{
    return target && target->IsDerived(zuRttiInterface::TYPE);
}

} // namespace zu
