#include "xexml/xml_serialise.h"

#include <cstdio>
#include <string>
#include <vector>

#include "xexml/item_text.h"

namespace cblxml::xexml {
namespace {

constexpr char kQuote = '"';
constexpr std::string_view kIndent = "    ";
// Text content and attribute values lose trailing spaces, tabs and NULs;
// processing-instruction data loses line feeds too.
constexpr char kTextTrim[] = {' ', '\t', '\0'};
constexpr char kPiTrim[] = {' ', '\t', '\n', '\0'};
// The XML Schema instance namespace, declared on the document element.
constexpr std::string_view kXsiDeclaration =
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";
static_assert(kXsiDeclaration.size() == 54, "the declaration is 54 characters");

std::string_view entity_of(char c)
{
    switch (c) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\'':
        return "&apos;";
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    default:
        return {};
    }
}

void write_quoted(xml_writer &out, std::string_view text)
{
    out.put(&kQuote, 1);
    out.put(text);
    out.put(&kQuote, 1);
}

std::string_view view(const char *text) { return text != nullptr ? text : std::string_view(); }

// The element's namespace declaration: none when the parent has the same
// URI; "xmlns:prefix" for a prefixed name; else "xmlns".
void write_element_namespace(xml_writer &out, const xd_dom_node_t *element)
{
    const char *uri = element->namespace_uri;
    if (uri == nullptr)
        return;
    const xd_dom_node_t *parent = element->parent;
    if (parent != nullptr && parent->namespace_uri != nullptr &&
        std::strcmp(parent->namespace_uri, uri) == 0)
        return;
    const char *colon = std::strchr(element->name, ':');
    if (colon != nullptr) {
        out.put(" xmlns:");
        out.put(element->name, static_cast<size_t>(colon - element->name));
        out.put("=");
    } else {
        out.put(" xmlns=");
    }
    write_quoted(out, uri);
}

void write_schema_attributes(xml_writer &out, const xd_dom_node_t *element)
{
    out.put(kXsiDeclaration);
    if (element->namespace_uri != nullptr) {
        out.put(" xsi:schemaLocation=\"");
        out.put(element->namespace_uri);
        out.put(" ");
    } else {
        out.put(" xsi:noNamespaceSchemaLocation=\"");
    }
    const xmlio_fcb &fcb = out.fcb;
    if (fcb.doctype_name != nullptr)
        out.put(fcb.doctype_name, trimmed_length(fcb.doctype_name, fcb.doctype_len, " ", 1));
    out.put(&kQuote, 1);
}

// One attribute; `number` is its namespace prefix's (0: none).
void write_attribute(xml_writer &out, const xd_dom_node_t *a, int number)
{
    out.put(" ");
    if (number != 0) {
        char prefix[32];
        out.put(prefix, static_cast<size_t>(std::snprintf(prefix, sizeof prefix, "ns%d:", number)));
    }
    out.put(view(a->name));
    out.put("=\"");
    if (a->value != nullptr)
        write_escaped(out, a->value, std::strlen(a->value));
    out.put(&kQuote, 1);
}

// Numbered prefixes for the attributes' namespaces, declared before the
// first attribute. Numbers start at 1 again for every element.
void write_attributes(xml_writer &out, const xd_dom_node_t *element)
{
    const xd_dom_node_t *a = element->first_attribute;
    while (a != nullptr && a->namespace_uri == nullptr)
        a = a->next_sibling;
    if (a == nullptr) {
        // No attribute has a namespace: nothing to declare or number.
        for (a = element->first_attribute; a != nullptr; a = a->next_sibling)
            write_attribute(out, a, 0);
        return;
    }
    std::vector<const char *> uris;
    std::vector<int> numbers;
    for (a = element->first_attribute; a != nullptr; a = a->next_sibling) {
        int number = 0;
        if (a->namespace_uri != nullptr) {
            for (size_t i = 0; i < uris.size() && number == 0; ++i) {
                if (std::strcmp(uris[i], a->namespace_uri) == 0)
                    number = static_cast<int>(i) + 1;
            }
            if (number == 0) {
                uris.push_back(a->namespace_uri);
                number = static_cast<int>(uris.size());
                char head[32];
                out.put(head, static_cast<size_t>(
                                  std::snprintf(head, sizeof head, " xmlns:ns%d=", number)));
                write_quoted(out, a->namespace_uri);
            }
        }
        numbers.push_back(number);
    }
    size_t i = 0;
    for (a = element->first_attribute; a != nullptr; a = a->next_sibling)
        write_attribute(out, a, numbers[i++]);
}

void write_start_tag(xml_writer &out, const xd_dom_node_t *element, size_t depth)
{
    out.put("<");
    out.put(view(element->name));
    write_element_namespace(out, element);
    const uint32_t flags = out.fcb.flags;
    if (depth == 0 && (flags & XMLIO_SCHEMA) != 0 && (flags & XMLIO_NO_XSI) == 0)
        write_schema_attributes(out, element);
    write_attributes(out, element);
}

// The run of text nodes from `text` on, joined, trimmed and escaped.
void write_text_run(xml_writer &out, const xd_dom_node_t *text)
{
    const xd_dom_node_t *next = text->next_sibling;
    if (next == nullptr || next->kind != XD_DOM_TEXT) {
        // A run of one, written from where it is.
        if (text->value != nullptr)
            write_escaped(out, text->value, std::strlen(text->value));
        return;
    }
    std::string joined;
    for (; text != nullptr && text->kind == XD_DOM_TEXT; text = text->next_sibling) {
        if (text->value != nullptr)
            joined += text->value;
    }
    write_escaped(out, joined.data(), joined.size());
}

void write_pi(xml_writer &out, const xd_dom_node_t *pi)
{
    out.put("<?");
    out.put(view(pi->name));
    if (pi->value != nullptr) {
        out.put(" ");
        out.put(pi->value, trimmed_length(pi->value, std::strlen(pi->value), kPiTrim, 4));
    }
    out.put("?>");
    out.newline();
}

// The next node to write after `node`: a text node stands for the whole run
// of text siblings that follows it.
const xd_dom_node_t *next_to_write(const xd_dom_node_t *node)
{
    const xd_dom_node_t *next = node->next_sibling;
    if (node->kind == XD_DOM_TEXT) {
        while (next != nullptr && next->kind == XD_DOM_TEXT)
            next = next->next_sibling;
    }
    return next;
}

// An element is laid out in lines when any child is not a text node.
bool in_lines(const xd_dom_node_t *element)
{
    for (const xd_dom_node_t *c = element->first_child; c != nullptr; c = c->next_sibling) {
        if (c->kind != XD_DOM_TEXT)
            return true;
    }
    return false;
}

// CR LF and 16 levels of indentation, to be written in one piece.
constexpr std::string_view kBreak = "\r\n"
                                    "                                "
                                    "                                ";
static_assert(kBreak.size() == 2 + 16 * kIndent.size(), "CR LF and 16 levels");

void line_break(xml_writer &out, size_t depth)
{
    // CR LF unless the text ends with one already, then the indentation: up
    // to 16 levels in the same piece, the deeper ones after it a level at a
    // time.
    const size_t from = outbuf_ends_crlf(out.buf) ? 2 : 0;
    const size_t levels = depth < 16 ? depth : 16;
    out.put(kBreak.data() + from, 2 - from + levels * kIndent.size());
    for (size_t i = levels; i < depth; ++i)
        out.put(kIndent);
}

}  // namespace

void write_escaped(xml_writer &out, const char *text, size_t n)
{
    n = trimmed_length(text, n, kTextTrim, 3);
    size_t start = 0;
    for (size_t i = 0; i < n; ++i) {
        const std::string_view entity = entity_of(text[i]);
        if (entity.empty())
            continue;
        out.put(text + start, i - start);
        out.put(entity);
        start = i + 1;
    }
    out.put(text + start, n - start);
}

void serialise_document(xml_writer &out, const xd_dom_node_t *document)
{
    // One entry per open element: whether it is laid out in lines.
    std::vector<bool> lines;
    const xd_dom_node_t *container = document;
    const xd_dom_node_t *node = document->first_child;
    const bool compact = out.compact();
    for (;;) {
        if (node == nullptr) {
            if (container == document || lines.empty())
                return;
            // The end of an element's children: its end tag.
            const size_t depth = lines.size() - 1;
            if (lines.back() && !compact)
                line_break(out, depth);
            out.put("</");
            out.put(view(container->name));
            out.put(">");
            lines.pop_back();
            node = next_to_write(container);
            container = container->parent;
            continue;
        }
        const size_t depth = lines.size();
        if (!lines.empty() && lines.back() && !compact)
            line_break(out, depth);
        switch (node->kind) {
        case XD_DOM_ELEMENT:
            write_start_tag(out, node, depth);
            if (node->first_child == nullptr) {
                out.put("/>");
                break;
            }
            out.put(">");
            lines.push_back(in_lines(node));
            container = node;
            node = node->first_child;
            continue;
        case XD_DOM_TEXT:
            write_text_run(out, node);
            break;
        case XD_DOM_PI:
            write_pi(out, node);
            break;
        default:
            break;
        }
        node = next_to_write(node);
    }
}

}  // namespace cblxml::xexml
