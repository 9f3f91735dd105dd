#include "walk/root_walk.h"

#include <mutex>

namespace tqm
{

rcode walk_root(Request::Impl &request, tqm_map_function root, rdl_tqm_datatree &tree)
{
    static std::mutex one_walk;
    const std::lock_guard lock(one_walk);
    serve(&request);
    request.observation().begin(tree);
    const rcode code = root(&request.context(), &tree, request.output().handle_of(request.output().base()));
    return code == TQM_ERR_SKIP_NODE ? 0 : code;
}

} // namespace tqm
