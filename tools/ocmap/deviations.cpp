// See deviations.h.
#include "deviations.h"

#include <vector>

#include "model_probe.h"

namespace ocmap
{
namespace
{

constexpr const char *header = R"(module tarvex-openconfig-macsec-deviations {
  yang-version 1.1;
  namespace "http://tarvex.example/ns/yang/tarvex-openconfig-macsec-deviations";
  prefix tarvex-oc-macsec-devs;

  import openconfig-macsec {
    prefix oc-macsec;
  }

  organization "Tarvex";
  contact "The publisher of the router's models.";
  description
    "What this router does not support of openconfig-macsec. A request that
     names one of these nodes is refused; one that selects more than it names
     passes over them.";

  revision 2026-11-23 {
    description
      "Made by running the mapping.";
  }
)";

constexpr const char *list_comment = R"(
  // The key of this list is not supported, and YANG has no list of state
  // that could be named without its key. The entries are answered to
  // requests for what is around the list.)";

std::string schema_node_identifier(const std::string &path)
{
    std::string text;
    for (const char c : path) {
        text += c == '/' ? "/oc-macsec:" : std::string(1, c);
    }
    return text;
}

std::string deviation(const std::string &path)
{
    return "\n  deviation \"" + schema_node_identifier(path) + "\" {\n    deviate not-supported;\n  }\n";
}

} // namespace

tqm::Expected<std::string> deviations(const Environment &environment)
{
    const auto nodes = probe_model(environment);
    if (!nodes) {
        return tl::unexpected(nodes.error());
    }
    std::string text = header;
    std::string covered; // the list that was deviated last; its nodes follow it
    for (const ProbedNode &node : *nodes) {
        const std::string &path = node.info.path;
        const bool is_covered = !covered.empty() && path.starts_with(covered + "/");
        if (node.supported || is_covered) {
            continue;
        }
        if (node.info.is_key) {
            covered = path.substr(0, path.rfind('/'));
            text += list_comment + deviation(covered);
        } else {
            text += deviation(path);
        }
    }
    return text + "}\n";
}

} // namespace ocmap
