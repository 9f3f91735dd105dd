// A module's .def file as data, and the child tables that follow from it, all at compile time.
#pragma once

#include <stddef.h>

#include "tqm_map.h"

namespace oc_macsec
{

enum class line_kind : unsigned char { plain, leaf_list, key, container, list, end };

struct table_line {
    const char *tag = nullptr;
    const char *name = nullptr;
    tqm_map_function walker = nullptr;
    int number = 0; // of the line in the file
    line_kind kind = line_kind::end;
    bool state = false; // of a container or list: what it holds is operational data
};

constexpr bool holds_lines(line_kind kind)
{
    return kind == line_kind::container || kind == line_kind::list;
}

// The index behind the line at `at` and all that it holds. A missing END does not compile.
template <size_t count>
constexpr size_t behind(const table_line (&lines)[count], size_t at)
{
    if (!holds_lines(lines[at].kind)) {
        return at + 1;
    }
    size_t inner = at + 1;
    while (lines[inner].kind != line_kind::end) {
        inner = behind(lines, inner);
    }
    return inner + 1;
}

template <size_t count>
constexpr size_t index_of(const table_line (&lines)[count], int number)
{
    size_t at = 0;
    while (lines[at].number != number) {
        ++at;
    }
    return at;
}

// The children of the line `number`, as `Child`: whatever lines make_child() makes one of.
template <class Child, const auto &lines, int number>
struct child_table {
    struct array {
        Child child[sizeof lines / sizeof lines[0]];
        size_t count;
    };
    static constexpr array all()
    {
        constexpr size_t parent = index_of(lines, number);
        array children = {};
        for (size_t at = parent + 1; lines[at].kind != line_kind::end; at = behind(lines, at)) {
            if (make_child(lines[at], lines[parent], children.child[children.count])) {
                ++children.count;
            }
        }
        return children;
    }
    static constexpr size_t count = all().count;

    struct exact_array {
        Child child[count + 1]; // a node can be without children, an array cannot
    };
    static constexpr exact_array exact()
    {
        exact_array children = {};
        for (size_t at = 0; at < count; ++at) {
            children.child[at] = all().child[at];
        }
        return children;
    }
    static constexpr exact_array table = exact();
};

// The key among the lines that the line `number` holds.
template <size_t count>
constexpr const table_line &key_of(const table_line (&lines)[count], int number)
{
    size_t at = index_of(lines, number) + 1;
    while (lines[at].kind != line_kind::key) {
        at = behind(lines, at);
    }
    return lines[at];
}

// Whether each exported name ends in its tag, which stands there without hyphens.
template <size_t count>
constexpr bool names_fit(const table_line (&lines)[count])
{
    for (const table_line &line : lines) {
        if (line.tag == nullptr) {
            continue;
        }
        const char *name = line.name;
        while (*name != '\0') {
            ++name;
        }
        const char *tag = line.tag;
        while (*tag != '\0') {
            ++tag;
        }
        while (tag != line.tag) {
            --tag;
            if (*tag != '-' && (name == line.name || *--name != *tag)) {
                return false;
            }
        }
        if (name == line.name || *--name != '_') {
            return false;
        }
    }
    return true;
}

} // namespace oc_macsec

// The second reading by a _parser file: the lines as data.
#define LINE_(kind, state, tag, name) {tag, #name, WALKER(name), __LINE__, oc_macsec::line_kind::kind, state},
#define LINE_LEAF(variant, tag, name, ...) LINE_(variant, false, tag, name)
#define LINE_END() {},

// In the third reading: the children of the line that a walker is made of.
#define CHILDREN_OF_LINE(type)                                                                                         \
    {                                                                                                                  \
        oc_macsec::child_table<oc_macsec::type, lines, __LINE__>::table.child,                                         \
            oc_macsec::child_table<oc_macsec::type, lines, __LINE__>::count                                            \
    }
