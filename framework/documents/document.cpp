// Reading and parsing of documents.
#include "tqm/document.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <sys/stat.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "documents/document_content.h"
#include "documents/json_reader.h"
#include "documents/wrapper_reader.h"
#include "documents/xml_text.h"
#include "text/characters.h"
#include "text/line_index.h"
#include "tqm_map.h"
#include "trees/arena.h"

namespace tqm
{

namespace
{

std::shared_ptr<char[]> allocate(std::size_t size)
{
    return {allocate_large(size), [](char *memory) { std::free(memory); }};
}

} // namespace

// The object of a large document takes as much memory as the tree that was made of it. Kept for later use, it would
// stand beside the output, which takes its own in other sizes.
void DocumentAccess::drop(std::unique_ptr<DocumentContent> content)
{
    [[maybe_unused]] constexpr std::size_t large = std::size_t{1} << 20;
    [[maybe_unused]] const bool is_large = content->size >= large;
    content.reset();
#ifdef __GLIBC__
    if (is_large) {
        malloc_trim(0);
    }
#endif
}

// ---- Document ----

Document::Document(std::unique_ptr<DocumentContent> content) : content_(std::move(content)) {}
Document::Document(Document &&) noexcept = default;
Document &Document::operator=(Document &&) noexcept = default;
Document::~Document() = default;

std::optional<uint32_t> Document::kind() const
{
    return content_->kind;
}

bool Document::is_filter() const
{
    return content_->is_filter;
}

bool Document::selects_all() const
{
    return content_->selects_all;
}

Document Document::selecting_all()
{
    auto content = std::make_unique<DocumentContent>();
    content->selects_all = true;
    return Document(std::move(content));
}

Expected<Document> Document::parse(std::string_view text)
{
    auto content = std::make_unique<DocumentContent>();
    content->buffer = allocate(text.size() + 1);
    content->size = text.size();
    if (content->buffer == nullptr) {
        return failure(ErrorTag::resource_denied, "out of memory");
    }
    std::memcpy(content->buffer.get(), text.data(), text.size());
    return parse_buffer(std::move(content));
}

Expected<Document> Document::read(std::FILE *file)
{
    // One byte more than a regular file has, so that its end is seen without growing.
    struct stat status {
    };
    const bool sized = fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
    std::size_t capacity = std::max<std::size_t>(sized ? static_cast<std::size_t>(status.st_size) + 1 : 0, 1 << 16);
    std::size_t size = 0;
    char *memory = allocate_large(capacity);
    while (memory != nullptr) {
        size += std::fread(memory + size, 1, capacity - size, file);
        if (size < capacity) {
            break;
        }
        capacity *= 2;
        char *larger = static_cast<char *>(std::realloc(memory, capacity));
        if (larger == nullptr) {
            std::free(memory);
        }
        memory = larger;
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    std::shared_ptr<char[]> buffer(memory, [](char *done) { std::free(done); });
    auto content = std::make_unique<DocumentContent>();
    content->buffer = std::move(buffer);
    content->size = size;
    if (std::ferror(file) != 0) {
        return failure(ErrorTag::operation_failed, std::string("the request cannot be read: ") + std::strerror(errno));
    }
    return parse_buffer(std::move(content));
}

Expected<Document> Document::read_file(const std::filesystem::path &path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    if (file == nullptr && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    if (file == nullptr) {
        return failure(ErrorTag::operation_failed, "cannot open '" + path.string() + "': " + std::strerror(errno));
    }
    Expected<Document> document = read(file.get());
    if (!document) {
        document.error().text = path.string() + ": " + document.error().text;
    }
    return document;
}

Expected<Document> Document::parse_buffer(std::unique_ptr<DocumentContent> content)
{
    const std::string_view text{content->buffer.get(), content->size};
    if (text.empty()) {
        return malformed("the request is empty");
    }
    if (!is_declared_utf8(text)) {
        return malformed("the request is no UTF-8 text");
    }
    // Parsing in place spoils the text: its lines are to be known before.
    text::LineIndex lines;
    if (const std::size_t bad = text::find_bad_character(text, lines); bad != std::string_view::npos) {
        return malformed("the request has bytes that are no XML character in UTF-8 at " + lines.place_of(bad));
    }
    if (is_json(text)) {
        if (Expected<void> read = read_json(lines, *content); !read) {
            return tl::unexpected(read.error());
        }
        if (const Expected<void> read = read_wrapper(*content, content->dom.first_child()); !read) {
            return tl::unexpected(read.error());
        }
        return Document(std::move(content));
    }
    if (const std::size_t bad = find_bad_reference(text); bad != std::string_view::npos) {
        return malformed("the request is no XML document: '&' begins no reference to a character at " +
                         lines.place_of(bad));
    }
    constexpr unsigned int options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                     pugi::parse_eol | pugi::parse_embed_pcdata | pugi::parse_ws_pcdata_single |
                                     pugi::parse_doctype | pugi::parse_fragment;
    const pugi::xml_parse_result result =
        content->dom.load_buffer_inplace(content->buffer.get(), content->size, options, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    if (!result) {
        return malformed(std::string("the request is no XML document: ") + result.description() + " at " +
                         lines.place_of(static_cast<std::size_t>(result.offset)));
    }

    pugi::xml_node root;
    for (pugi::xml_node node : content->dom.children()) {
        if (node.type() == pugi::node_doctype) {
            return malformed("a document type declaration is not allowed");
        }
        if (node.type() != pugi::node_element) {
            return malformed("the request is no XML document: there is text outside its root element");
        }
        if (root) {
            return malformed(std::string("the request has a second root element, <") + node.name() + ">");
        }
        root = node;
    }
    if (!root) {
        return malformed("the request has no element");
    }
    if (const Expected<void> read = read_wrapper(*content, root); !read) {
        return tl::unexpected(read.error());
    }
    return Document(std::move(content));
}

} // namespace tqm
