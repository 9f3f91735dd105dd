// What sort of walk a request is for.
#pragma once

#include "tqm/request.h"
#include "tqm_map.h"

namespace tqm
{

class WalkKind
{
public:
    /// `header` is looked at when it is asked for: it may be written before the walk.
    WalkKind(const tqm_map_request_hdr &header, Direction direction) : header_(header), direction_(direction) {}

    bool is_forward() const { return direction_ == Direction::forward; }
    bool is_get() const { return header_.kind == TQM_REQ_GET; }
    bool is_read() const { return header_.kind == TQM_REQ_GET_CONFIG || is_get(); }
    bool is_forward_edit() const { return is_forward() && !is_read(); }
    /// Forward reads: the walk is to lead to all that matching the answer needs.
    bool is_widened() const { return widened_; }
    void widen() { widened_ = true; }

private:
    const tqm_map_request_hdr &header_;
    Direction direction_;
    bool widened_ = false;
};

} // namespace tqm
