// What an edit would do: the native side of a look at it, and how that is told.
#pragma once

#include <string>
#include <vector>

#include "native_store.h"
#include "tqm/framework.h"

namespace ocmap
{

/// Keeps of an edit what it would change, and leaves the datastore as it is.
class Preview final : public NativeStore
{
public:
    using NativeStore::NativeStore;
    const std::vector<router::Change> &changes() const { return changes_; }

protected:
    router::Expected<void> apply(const router::EditNode *trees) override;

private:
    std::vector<router::Change> changes_;
};

/// A line for each native node that would change, and for each of `notes`; with Format::json one object. Secrets are
/// not shown.
std::string dry_run_text(const std::vector<router::Change> &changes, const std::vector<std::string> &notes,
                         tqm::Format format);

} // namespace ocmap
