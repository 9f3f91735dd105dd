// make_schema_table YANG_DIRECTORY FILE: writes the rows of the schema table (schema_table.h), as C++, from the modules
// in a directory. Run when the project is built; part of no installation.
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "model_schema.h"
#include "openconfig.h"

namespace
{

std::string quoted(std::string_view text)
{
    std::string literal = "\"";
    for (const char c : text) {
        literal += c == '"' || c == '\\' ? "\\" : "";
        literal += c;
    }
    return literal + "\"";
}

std::string joined(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names) {
        text += (text.empty() ? "" : " ") + name;
    }
    return text;
}

const char *name_of(tqm::NodeKind kind)
{
    switch (kind) {
    case tqm::NodeKind::unknown:
        break;
    case tqm::NodeKind::container:
        return "container";
    case tqm::NodeKind::list:
        return "list";
    case tqm::NodeKind::leaf:
        return "leaf";
    case tqm::NodeKind::leaf_list:
        return "leaf_list";
    }
    return "unknown";
}

const char *name_of(tqm::ValueForm form)
{
    switch (form) {
    case tqm::ValueForm::text:
        break;
    case tqm::ValueForm::number:
        return "number";
    case tqm::ValueForm::boolean:
        return "boolean";
    case tqm::ValueForm::empty:
        return "empty";
    }
    return "text";
}

// A row names what differs from the record's own defaults. A field that is added to the framework's record is asked for
// by the compiler here.
std::string row(const tqm::SchemaNode &node, const std::string &ns_constant)
{
    const auto &[path, ns, kind, keys, form, config, unspaced, secret, leafref, marker, companions] = node;
    std::string text =
        "    {.path = " + quoted(path) + ", .ns = " + ns_constant + ", .kind = NodeKind::" + name_of(kind);
    text += keys.empty() ? "" : ", .keys = " + quoted(joined(keys));
    text += form == tqm::ValueForm::text ? "" : std::string(", .form = ValueForm::") + name_of(form);
    text += config ? "" : ", .config = false";
    text += unspaced ? ", .unspaced = true" : "";
    text += secret ? ", .secret = true" : "";
    text += leafref.empty() ? "" : ", .leafref = " + quoted(leafref);
    text += marker.empty() ? "" : ", .marker = " + quoted(marker);
    text += companions.empty() ? "" : ", .companions = " + quoted(joined(companions));
    return text + "},\n";
}

std::string table_of(const router::Models &models)
{
    std::string namespaces;
    std::string modules;
    std::map<std::string, std::string> constants; // a namespace's, by its URI
    for (const router::ModuleInfo &module : models.modules()) {
        const std::string constant = "ns_" + std::to_string(constants.size());
        constants.emplace(module.ns, constant);
        namespaces += "constexpr std::string_view " + constant + " = " + quoted(module.ns) + ";\n";
        modules += "    {" + quoted(module.name) + ", " + constant + ", " + quoted(module.prefix) + "},\n";
    }
    std::string nodes;
    const tqm::Schema schema = ocmap::schema_of(models);
    for (const tqm::SchemaNode &node : schema.nodes()) {
        nodes += row(node, constants.at(node.ns));
    }
    return "// Made from yang/ by make_schema_table: a change here is lost.\n"
           "#include \"schema_table.h\"\n\n"
           "namespace ocmap::table\n{\nnamespace\n{\n\n"
           "using tqm::NodeKind;\nusing tqm::ValueForm;\n\n" +
           namespaces + "\nconstexpr Module module_rows[] = {\n" + modules + "};\n\nconstexpr Node node_rows[] = {\n" +
           nodes +
           "};\n\n} // namespace\n\n"
           "const std::span<const Module> modules = module_rows;\n"
           "const std::span<const Node> nodes = node_rows;\n\n"
           "} // namespace ocmap::table\n";
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: make_schema_table YANG_DIRECTORY FILE\n", stderr);
        return 2;
    }
    const auto models = ocmap::load_models(argv[1]);
    if (!models) {
        std::fprintf(stderr, "error: %s\n", models.error().text.c_str());
        return 1;
    }
    if (const auto setup = router::Setup::make(*models, ocmap::visible_lists()); !setup) { // a list is not there
        std::fprintf(stderr, "error: %s: %s\n", setup.error().path.c_str(), setup.error().text.c_str());
        return 1;
    }
    std::ofstream file(argv[2], std::ios::binary);
    file << table_of(*models);
    file.close();
    if (!file) {
        std::fprintf(stderr, "error: cannot write '%s'\n", argv[2]);
        return 1;
    }
    return 0;
}
