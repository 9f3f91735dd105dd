// NETCONF documents in: the text is parsed and its wrapper (rpc, config, filter, data) is taken off. What the elements
// inside mean is left to the request that is made of them. Documents out are printed by Trees (framework.h).
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tqm/error.h"
#include "tqm/export.h"

namespace tqm
{

struct DocumentContent;

/// A parsed document, until a request takes it. It shares nothing: any thread may make one and hand it on.
class TQM_EXPORT Document
{
public:
    /// Parses `text`. XML, or JSON where it begins as such. Fails with line and column where it is neither.
    static Expected<Document> parse(std::string_view text);
    /// Reads `file` to its end. The caller closes it. Fails as parse() does, and where the file cannot be read.
    static Expected<Document> read(std::FILE *file);
    static Expected<Document> read_file(const std::filesystem::path &path);

    /// A read without a filter.
    static Document selecting_all();

    Document(Document &&) noexcept;
    Document &operator=(Document &&) noexcept;
    ~Document();

    /// TQM_REQ_* where the wrapper says it, else nothing: then whoever asks decides.
    std::optional<uint32_t> kind() const;
    /// True for a bare <filter>: a read, of the state or not.
    bool is_filter() const;
    /// True for a read that names no filter.
    bool selects_all() const;

private:
    friend struct DocumentAccess;

    explicit Document(std::unique_ptr<DocumentContent> content);
    static Expected<Document> parse_buffer(std::unique_ptr<DocumentContent> content);

    std::unique_ptr<DocumentContent> content_;
};

} // namespace tqm
