// What a failed request tells its client: all that an rpc-error carries (RFC 6241, section 4.3). Errors are values:
// whoever finds one makes its text, and nobody rewords it further up. How one is printed is left to the tool.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tl/expected.hpp>

#include "tqm/export.h"
#include "tqm/instance_path.h"

extern "C" {
#include "tqm_rcode.h"
}

namespace tqm
{

/// error-type: the layer in which the error was found.
enum class ErrorType { transport, rpc, protocol, application };

/// error-severity. No error-tag of RFC 6241 is a warning's.
enum class ErrorSeverity { error, warning };

/// error-tag, in the order of RFC 6241, appendix A.
enum class ErrorTag {
    in_use,
    invalid_value,
    too_big,
    missing_attribute,
    bad_attribute,
    unknown_attribute,
    missing_element,
    bad_element,
    unknown_element,
    unknown_namespace,
    access_denied,
    lock_denied,
    resource_denied,
    rollback_failed,
    data_exists,
    data_missing,
    operation_not_supported,
    operation_failed,
    malformed_message,
};

/// Their names in a message, as "data-missing".
TQM_EXPORT std::string_view name_of(ErrorTag tag);
TQM_EXPORT std::string_view name_of(ErrorType type);
TQM_EXPORT std::string_view name_of(ErrorSeverity severity);

/// The tag of a failure of which only the plug-in's code is known.
TQM_EXPORT ErrorTag tag_of(rcode code);

/// The application tag of a leaf-list with more values than its max-elements (RFC 7950, section 15.2).
inline constexpr const char *too_many_elements = "too-many-elements";

/// An instance-identifier as text, with the namespaces of its prefixes (RFC 7950, section 9.13).
struct InstanceIdentifier {
    std::string text;
    std::vector<std::pair<std::string, std::string>> namespaces; ///< prefix and URI, each once
};

struct Error {
    std::string text;               ///< error-message: one sentence for the client; never empty
    std::string path = {};          ///< the place for people: data path with keys and without prefixes, or empty
    std::string tag = {};           ///< name of the node that the plug-in has left as the one that failed, or empty
    std::optional<rcode> code = {}; ///< result code of the plug-in or of a framework operation

    ErrorTag error_tag = ErrorTag::operation_failed;
    ErrorType type = ErrorType::application;
    ErrorSeverity severity = ErrorSeverity::error;
    std::string app_tag = {};
    std::string bad_element = {};   ///< error-info, where the tag asks for it
    std::string bad_attribute = {}; ///< the same
    std::string bad_namespace = {}; ///< the same
    /// error-path: the place node by node, with namespaces once the framework gives the error away. Empty for a place
    /// that no model has; of an unknown namespace it is that of the node around.
    std::vector<PathStep> instance = {};
    std::string native_path = {}; ///< where the router has refused: its own place
    std::string native_text = {}; ///< and its own words

    /// Says where: gives `path` and `instance`.
    Error &at(const InstancePath &place)
    {
        path = place.text();
        instance = place.steps();
        return *this;
    }
};

/// The error's place in the form of an XML message; an empty text where it has none.
TQM_EXPORT InstanceIdentifier xml_path(const Error &error);
/// The same in JSON's form (RFC 7951, section 6.11): names of modules, only where they change.
TQM_EXPORT std::string json_path(const Error &error);

template <class T>
using Expected = tl::expected<T, Error>;

} // namespace tqm
