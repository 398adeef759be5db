#pragma once

namespace zu {

class zuRequestInterfaceForDynamicResource;

// Who asked for a resource request and wants to hear how it ended (a renderer that waits
// for a block, a prefetcher that counts). The client must outlive its requests.
class zuResourceRequestClientInterface {
public:
    virtual ~zuResourceRequestClientInterface() = default;

    // Called on the thread that owns the scene when the request leaves the controller (or
    // the synchronous path): `finalized` is true after its finalisation, false when it was
    // cancelled. The request is deleted right after the call; the client may read its
    // status but must not keep it.
    virtual void onRequestFinished(zuRequestInterfaceForDynamicResource* request, bool finalized) = 0;
};

} // namespace zu
