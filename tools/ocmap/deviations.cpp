// What is not supported is found by running the mapping; where values differ is written down here.
#include "deviations.h"

#include <algorithm>
#include <array>

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
    "Where this router differs from openconfig-macsec: nodes that it does not
     support, and values that it takes and gives. A request that names a node
     that is not supported is refused; one that selects more than it names
     passes over it.";

  revision 2026-11-23 {
    description
      "Made by running the mapping.";
  }

  typedef date-and-time {
    type string {
      pattern '[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}(\.[0-9]+)?'
            + 'Z?([\+\-][0-9]{2}:[0-9]{2})?';
    }
    description
      "A date and a time of day in the router's local time: a zone may be
       given, and is not looked at. Answers have none.";
  }
)";

constexpr const char *start = R"(    deviate replace {
      type union {
        type date-and-time;
        type enumeration {
          enum VALID_IMMEDIATELY;
        }
      }
    }
)";

constexpr const char *end = R"(    deviate replace {
      type union {
        type date-and-time;
        type enumeration {
          enum NO_EXPIRATION;
        }
      }
    }
)";

// The router takes the name of what is still to be made.
constexpr const char *policy_name = R"(    deviate replace {
      type leafref {
        path "/oc-macsec:macsec/oc-macsec:mka/oc-macsec:policies/"
           + "oc-macsec:policy/oc-macsec:name";
        require-instance false;
      }
    }
)";

constexpr const char *key_chain_name = R"(    deviate replace {
      type leafref {
        path "/oc-macsec:macsec/oc-macsec:mka/oc-macsec:key-chains/"
           + "oc-macsec:key-chain/oc-macsec:name";
        require-instance false;
      }
    }
)";

// The published model refers to interfaces of a model that the router does not have.
constexpr const char *interface_name = R"(    deviate replace {
      type string;
    }
)";

constexpr const char *one_cipher_suite = R"(    deviate add {
      max-elements 1;
    }
)";

struct Difference {
    const char *path;
    const char *deviate;
};

constexpr std::array differences = {
    Difference{"/macsec/mka/policies/policy/config/macsec-cipher-suite", one_cipher_suite},
    Difference{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/valid-date-time", start},
    Difference{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/expiration-date-time", end},
    Difference{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/valid-date-time", start},
    Difference{"/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state/expiration-date-time", end},
    Difference{"/macsec/interfaces/interface/name", interface_name},
    Difference{"/macsec/interfaces/interface/config/name", interface_name},
    Difference{"/macsec/interfaces/interface/state/name", interface_name},
    Difference{"/macsec/interfaces/interface/mka/config/mka-policy", policy_name},
    Difference{"/macsec/interfaces/interface/mka/config/key-chain", key_chain_name},
    Difference{"/macsec/interfaces/interface/mka/state/mka-policy", policy_name},
    Difference{"/macsec/interfaces/interface/mka/state/key-chain", key_chain_name},
};

constexpr const char *not_supported = R"(    deviate not-supported;
)";

std::string schema_node_identifier(const std::string &path)
{
    std::string text;
    for (const char c : path) {
        text += c == '/' ? "/oc-macsec:" : std::string(1, c);
    }
    return text;
}

// What a client must be told of the node; null if it is as published. A key cannot be taken from its list.
const char *deviate(const ProbedNode &node)
{
    if (!node.supported && !node.info.is_key) {
        return not_supported;
    }
    const auto *const found = std::ranges::find_if(
        differences, [&](const Difference &difference) { return node.info.path == difference.path; });
    return found == differences.end() ? nullptr : found->deviate;
}

} // namespace

tqm::Expected<std::string> deviations(const Environment &environment)
{
    const auto nodes = probe_model(environment);
    if (!nodes) {
        return tl::unexpected(nodes.error());
    }
    std::string text = header;
    for (const ProbedNode &node : *nodes) {
        if (const char *const statement = deviate(node)) {
            text += "\n  deviation \"" + schema_node_identifier(node.info.path) + "\" {\n" + statement + "  }\n";
        }
    }
    return text + "}\n";
}

} // namespace ocmap
