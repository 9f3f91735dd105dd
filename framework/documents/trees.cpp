// Printing of built trees.
#include "tqm/framework.h"

#include "documents/json_writer.h"
#include "documents/xml_names.h"
#include "documents/xml_writer.h"

namespace tqm
{

namespace
{

bool write_xml(Sink sink, std::string_view wrapper, std::string_view attributes,
               const std::vector<const OutputNode *> &roots, bool with_operations)
{
    const std::string netconf = std::string("=\"") + netconf_ns + "\"";
    const std::string operations = with_operations ? " xmlns:nc" + netconf : "";
    XmlWriter writer(std::move(sink));
    if (wrapper.empty()) {
        return writer.write(operations, roots, with_operations);
    }
    const std::string all = " xmlns" + netconf + operations + std::string(attributes);
    return writer.write(wrapper, all, roots, with_operations);
}

} // namespace

void Trees::print(std::string &text, Format format, Envelope envelope) const
{
    const auto sink = [&](std::string_view piece) {
        text += piece;
        return true;
    };
    print_to(sink, format, envelope);
}

bool Trees::print(std::FILE *file, Format format, Envelope envelope) const
{
    return print_to(
        [file](std::string_view piece) { return std::fwrite(piece.data(), 1, piece.size(), file) == piece.size(); },
        format, envelope);
}

bool Trees::print_to(const std::function<bool(std::string_view)> &sink, Format format, Envelope envelope) const
{
    constexpr const char *names[] = {"config", "filter", "data"};
    const char *const name = envelope == Envelope::none ? "" : names[static_cast<std::size_t>(wrapper_)];
    const bool is_read = kind_ == TQM_REQ_GET || kind_ == TQM_REQ_GET_CONFIG;
    const bool with_operations = wrapper_ == Wrapper::config || (wrapper_ == Wrapper::data && !is_read);
    if (format == Format::json) {
        return JsonWriter(*schema_, sink).write(name, roots_, with_operations);
    }
    return write_xml(sink, name, wrapper_ == Wrapper::filter ? " type=\"subtree\"" : "", roots_, with_operations);
}

} // namespace tqm
