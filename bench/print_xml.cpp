// Parses the XML file that it is given and prints it again, and nothing else: what a program that keeps documents in
// pugixml's trees cannot do without.
#include <cstdio>

#include <pugixml.hpp>

int main(int count, char **arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: print_xml FILE\n");
        return 2;
    }
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_file(arguments[1]);
    if (!result) {
        std::fprintf(stderr, "%s: %s\n", arguments[1], result.description());
        return 1;
    }
    pugi::xml_writer_file writer(stdout);
    document.save(writer, "  ", pugi::format_indent | pugi::format_no_declaration);
    return std::fflush(stdout) == 0 ? 0 : 1;
}
