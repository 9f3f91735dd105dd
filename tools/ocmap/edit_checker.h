// Judges an edit by the model that its client speaks: names, structure and values, as the router keeps it.
#pragma once

#include <string>
#include <vector>

#include "router/client_model.h"
#include "tqm/edit_checker.h"

namespace ocmap
{

class ModelChecker final : public tqm::EditChecker
{
public:
    explicit ModelChecker(router::ClientModel model) : model_(std::move(model)) {}

    tqm::Expected<void> check(const tqm::EditTree &edit) override;

    /// What the router will not keep of the edit that was checked last, a sentence each.
    const std::vector<std::string> &notes() const { return notes_; }

private:
    router::ClientModel model_;
    std::vector<std::string> notes_;
};

} // namespace ocmap
