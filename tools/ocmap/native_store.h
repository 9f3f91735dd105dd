// The router's datastore as the framework's native side: lays edit records over the framework's output trees, and hands
// what a read finds to the framework's builder.
#pragma once

#include "router/datastore.h"
#include "tqm/native_side.h"

namespace ocmap
{

class NativeStore final : public tqm::NativeSide
{
public:
    /// `datastore` must outlive this object.
    explicit NativeStore(router::Datastore &datastore) : datastore_(datastore) {}

    tqm::Expected<void> edit(std::span<const tqm::OutputNode *const> trees) override;
    tqm::Expected<void> read(const tqm::OutputNode &filter, tqm::TreeBuilder &answer) override;

private:
    router::Datastore &datastore_;
};

} // namespace ocmap
