// The router's datastore as the framework's native side: lays edit records over the framework's output trees, and hands
// what a read finds to the framework's builder.
#pragma once

#include "router/datastore.h"
#include "tqm/native_side.h"

namespace ocmap
{

/// A router's error as the tool prints it.
tqm::Error from_router(router::Error error);

class NativeStore : public tqm::NativeSide
{
public:
    /// What an edit that only leads through an entry asks of it.
    enum class Leads {
        must_be_there,
        are_made ///< for a look at the values of an edit, whatever the store holds
    };
    /// `datastore` must outlive this object.
    explicit NativeStore(router::Datastore &datastore, Leads leads = Leads::must_be_there)
        : datastore_(datastore), leads_(leads)
    {
    }

    tl::expected<void, tqm::NativeError> edit(std::span<const tqm::OutputNode *const> trees) override;
    tqm::Expected<void> read(const tqm::OutputNode &filter, tqm::TreeBuilder &answer) override;

protected:
    /// Does what has become of the edit: here, to the datastore for good.
    virtual router::Expected<void> apply(const router::EditNode *trees) { return datastore_.edit(trees); }
    router::Datastore &datastore() { return datastore_; }

private:
    router::Datastore &datastore_;
    Leads leads_;
};

} // namespace ocmap
