#include "tqm/journal.h"

#include <cstdio>
#include <cstring>

#include "surface/operation.h"

namespace tqm
{

void Faults::fail(std::string operation, unsigned int nth, rcode code)
{
    faults_.push_back({std::move(operation), nth, code});
}

rcode Faults::on_call(std::string_view operation)
{
    rcode code = 0;
    for (Fault &fault : faults_) {
        if (fault.operation == operation && fault.countdown > 0 && --fault.countdown == 0) {
            code = fault.code;
        }
    }
    return code;
}

void JournalLine::start(std::string_view name)
{
    if (has_argument_) {
        text_ += ", ";
    }
    has_argument_ = true;
    if (!name.empty()) {
        text_.append(name).append("=");
    }
}

void JournalLine::append_text(const char *value, bool secret)
{
    if (value == nullptr) {
        text_ += "null";
    } else if (secret) {
        text_ += "***";
    } else {
        text_.append("\"").append(value).append("\"");
    }
}

bool hides_value(const Request::Impl *request, std::string_view path)
{
    const std::string whole = std::string(path.starts_with('/') ? "" : "/").append(path);
    const bool is_single_name = whole.rfind('/') == 0;
    return hides_value_below(request, whole) || (!is_single_name && request->schema().hides(whole));
}

bool hides_value_below(const Request::Impl *request, std::string_view path)
{
    return request == nullptr || request->schema().is_secret_tag(path.substr(path.rfind('/') + 1));
}

JournalLine &JournalLine::ns(const char *ns)
{
    start("ns");
    if (ns == nullptr) {
        text_ += "null";
        return *this;
    }
    const char *slash = std::strrchr(ns, '/');
    text_ += slash == nullptr ? ns : slash + 1;
    return *this;
}

JournalLine &JournalLine::node(std::string_view name, const rdl_tqm_datatree *node)
{
    start(name);
    if (node == nullptr) {
        text_ += "null";
    } else {
        text_ += node->tag == nullptr ? "?" : *node->tag == '\0' ? "out" : node->tag;
    }
    return *this;
}

JournalLine &JournalLine::source(const rdl_tqm_datatree *node)
{
    this->node("source", node);
    if (node != nullptr && (node->present & TQM_PRESENT_OPERATION) != 0) {
        text_.append(":").append(operation_name(node->operation));
    }
    return *this;
}

void JournalLine::end()
{
    if (!ended_) {
        text_ += ") = ";
    }
    ended_ = true;
}

JournalLine &JournalLine::result(rcode code)
{
    end();
    char text[16];
    std::snprintf(text, sizeof text, code == 0 ? "%u" : "0x%08x", code);
    text_ += text;
    return *this;
}

JournalLine &JournalLine::result_number(uint64_t value)
{
    end();
    text_ += std::to_string(value);
    return *this;
}

JournalLine &JournalLine::result_text(const char *value)
{
    end();
    append_text(value, false);
    return *this;
}

} // namespace tqm
