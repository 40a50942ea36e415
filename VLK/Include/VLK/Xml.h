#ifndef VLK_XML_H
#define VLK_XML_H

#include <pugixml.hpp>
#include <string>

/// XML documents and XPath: pugixml under the foundation's name, with overloads that take standard strings. Texts are
/// UTF-8. A document and its handles belong to one thread at a time.
namespace VLK::XML {

using namespace pugi;

/// Handle of an attribute; the document owns it.
class xml_attribute : public pugi::xml_attribute {
public:
    using pugi::xml_attribute::xml_attribute;
    xml_attribute(pugi::xml_attribute const & attribute) noexcept : pugi::xml_attribute(attribute) {}

    using pugi::xml_attribute::set_value;
    /// False on an empty handle or without memory.
    bool set_value(std::string const & value) { return set_value(value.c_str()); }
};

/// The text of an element.
class xml_text : public pugi::xml_text {
public:
    xml_text(pugi::xml_text const & text) noexcept : pugi::xml_text(text) {}

    using pugi::xml_text::set;
    bool set(std::string const & value) { return set(value.c_str()); }
};

class xml_node;

/// What nodes and documents give out, with the overloads above.
template <class TBase>
class TNodeAccess : public TBase {
public:
    using TBase::TBase;

    xml_text text() const { return TBase::text(); }
    xml_attribute attribute(char_t const * name) const { return TBase::attribute(name); }
    xml_attribute first_attribute() const { return TBase::first_attribute(); }
    xml_attribute append_attribute(char_t const * name) { return TBase::append_attribute(name); }
    xml_attribute prepend_attribute(char_t const * name) { return TBase::prepend_attribute(name); }
    xml_node child(char_t const * name) const;
    xml_node first_child() const;
    xml_node last_child() const;
    xml_node next_sibling() const;
    xml_node next_sibling(char_t const * name) const;
    xml_node parent() const;
    xml_node append_child(char_t const * name);
    xml_node append_child(xml_node_type type = node_element);
    xml_node prepend_child(char_t const * name);
    xml_node prepend_child(xml_node_type type = node_element);
};

/// Handle of a node; the document owns it.
class xml_node : public TNodeAccess<pugi::xml_node> {
public:
    using TNodeAccess::TNodeAccess;
    xml_node() noexcept = default;
    xml_node(pugi::xml_node const & node) noexcept : TNodeAccess(node.internal_object()) {}

    using pugi::xml_node::set_value;
    bool set_value(std::string const & value) { return set_value(value.c_str()); }
};

/// Owner of a tree of nodes.
class xml_document : public TNodeAccess<pugi::xml_document> {
public:
    xml_node document_element() const { return pugi::xml_document::document_element(); }

    using pugi::xml_document::save_file;
    /// False when the file can't be written.
    bool save_file(std::string const & path, char_t const * indent = "\t", unsigned int flags = format_default,
                   xml_encoding encoding = encoding_auto) const
    {
        return save_file(path.c_str(), indent, flags, encoding);
    }
};

template <class TBase>
xml_node TNodeAccess<TBase>::child(char_t const * name) const
{
    return TBase::child(name);
}
template <class TBase>
xml_node TNodeAccess<TBase>::first_child() const
{
    return TBase::first_child();
}
template <class TBase>
xml_node TNodeAccess<TBase>::last_child() const
{
    return TBase::last_child();
}
template <class TBase>
xml_node TNodeAccess<TBase>::next_sibling() const
{
    return TBase::next_sibling();
}
template <class TBase>
xml_node TNodeAccess<TBase>::next_sibling(char_t const * name) const
{
    return TBase::next_sibling(name);
}
template <class TBase>
xml_node TNodeAccess<TBase>::parent() const
{
    return TBase::parent();
}
template <class TBase>
xml_node TNodeAccess<TBase>::append_child(char_t const * name)
{
    return TBase::append_child(name);
}
template <class TBase>
xml_node TNodeAccess<TBase>::append_child(xml_node_type type)
{
    return TBase::append_child(type);
}
template <class TBase>
xml_node TNodeAccess<TBase>::prepend_child(char_t const * name)
{
    return TBase::prepend_child(name);
}
template <class TBase>
xml_node TNodeAccess<TBase>::prepend_child(xml_node_type type)
{
    return TBase::prepend_child(type);
}

} // namespace VLK::XML

#endif
