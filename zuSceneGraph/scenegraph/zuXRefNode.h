#pragma once

#include <zuSceneGraph/scenegraph/zuNode.h>

#include <string>

namespace zu {

// A node that stands for content kept elsewhere (another file, a part library entry):
// `reference` names it, and the application resolves it, typically by attaching the
// loaded content as children. The node adds nothing to updates or culling.
//
// Persisted after the node part: the reference (string).
class zuXRefNode : public zuNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuXRefNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuXRefNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuXRefNode();
    explicit zuXRefNode(const std::string& reference);
    ~zuXRefNode() override;

    void SetReference(const std::string& reference) { mReference = reference; }
    const std::string& GetReference() const { return mReference; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // The node part; the other object must be an external-reference node too. The
    // references are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The node part and the reference into an external-reference node (created for an
    // empty target).
    bool Clone(zuRttiInterface*& target) const override;

private:
    std::string mReference;
};

} // namespace zu
