// A program of somebody else's, on the installed framework: prints what the plug-in makes of an edit.
// Arguments: the plug-in, the document.
#include <array>
#include <cstdio>

#include <tqm/framework.h>

int main(int, char **arguments)
{
    constexpr std::array entry_points = {"tqm_map_reg_ocmacsec_conf"};
    auto plugin = tqm::Plugin::load(arguments[1], entry_points);
    auto document = tqm::Document::read_file(arguments[2]);
    if (!plugin || !document) {
        std::fputs((plugin ? document.error() : plugin.error()).text.c_str(), stderr);
        return 1;
    }
    tqm::Schema schema;
    schema.add({.path = "/macsec/policy-names/policy-name", .kind = tqm::NodeKind::list, .keys = {"name"}});
    auto trees = tqm::Framework(*plugin, schema).forward(std::move(*document));
    return trees && trees->print(stdout) ? 0 : 1;
}
