#include "yang_files.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <system_error>

#include <libyang/libyang.h>

#include "router/memory.h"

namespace router
{

namespace
{

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

// The text of a file, from malloc; null where it cannot be read. Throws for want of memory.
char *text_of(const std::string &path)
{
    const File file(std::fopen(path.c_str(), "re"), &std::fclose);
    if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0) {
        return nullptr;
    }
    const long size = std::ftell(file.get());
    if (size < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) {
        return nullptr;
    }
    auto *const text = static_cast<char *>(std::malloc(static_cast<size_t>(size) + 1));
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    if (std::fread(text, 1, static_cast<size_t>(size), file.get()) != static_cast<size_t>(size)) {
        std::free(text);
        return nullptr;
    }
    text[size] = '\0';
    return text;
}

// Called by libyang, which knows no exceptions.
LY_ERR find_module(const char *name, const char *, const char *, const char *, void *directory, LYS_INFORMAT *format,
                   const char **text, ly_module_imp_data_free_clb *free_text)
{
    try {
        char *const found = text_of(*static_cast<const std::string *>(directory) + "/" + name + ".yang");
        *format = LYS_IN_YANG;
        *text = found;
        *free_text = [](void *memory, void *) { std::free(memory); };
        return found == nullptr ? LY_ENOTFOUND : LY_SUCCESS;
    } catch (const std::bad_alloc &) {
        return LY_EMEM;
    }
}

} // namespace

Expected<std::shared_ptr<ly_ctx>> make_context(const std::string &yang_directory, uint16_t options)
{
    // Errors are taken from the context by whoever made the call; libyang itself is to print nothing.
    ly_log_options(LY_LOSTORE_LAST);
    const MemoryWatch watch;
    ly_ctx *created = nullptr;
    const uint16_t all = options | LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIRS;
    std::error_code error;
    if (!std::filesystem::is_directory(yang_directory, error) || ly_ctx_new(nullptr, all, &created) != LY_SUCCESS) {
        watch.check();
        return tl::unexpected(Error{"cannot use the YANG directory " + yang_directory, ""});
    }
    // The directory's name lives as long as the context.
    auto directory = std::make_shared<std::string>(yang_directory);
    std::shared_ptr<ly_ctx> context(created, [directory](ly_ctx *done) { ly_ctx_destroy(done); });
    ly_ctx_set_module_imp_clb(created, find_module, directory.get());
    return context;
}

} // namespace router
