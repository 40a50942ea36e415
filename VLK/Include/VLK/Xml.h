#ifndef VLK_XML_H
#define VLK_XML_H

#include <pugixml.hpp>
#include <string>
#include <type_traits>

#include "VLK/Export.h"

/// XML documents and XPath: pugixml under the foundation's name, with overloads that take standard strings. Texts are
/// UTF-8. A document and its handles belong to one thread at a time.
namespace VLK::XML {

using namespace pugi;

/// Handle of an attribute; the document owns it.
class VLK_API xml_attribute : public pugi::xml_attribute {
public:
    using pugi::xml_attribute::xml_attribute;
    xml_attribute() noexcept = default;
    xml_attribute(pugi::xml_attribute const & attribute) noexcept : pugi::xml_attribute(attribute) {}

    using pugi::xml_attribute::set_value;
    /// False on an empty handle or without memory.
    bool set_value(std::string const & value);
    /// Any value that set_value takes, without its result.
    template <class T>
    requires(!std::is_convertible_v<T, pugi::xml_attribute>) xml_attribute & operator=(T const & value)
    {
        set_value(value);
        return *this;
    }

    xml_attribute next_attribute() const { return pugi::xml_attribute::next_attribute(); }
    xml_attribute previous_attribute() const { return pugi::xml_attribute::previous_attribute(); }
};

/// The text of an element.
class VLK_API xml_text : public pugi::xml_text {
public:
    xml_text() = default;
    xml_text(pugi::xml_text const & text) noexcept : pugi::xml_text(text) {}

    using pugi::xml_text::set;
    /// False on an empty handle or without memory.
    bool set(std::string const & value);
    /// Any value that set takes, without its result.
    template <class T>
    requires(!std::is_convertible_v<T, pugi::xml_text>) xml_text & operator=(T const & value)
    {
        set(value);
        return *this;
    }
};

class xml_node;
class xpath_node;

/// What nodes and documents give out, with the overloads above. What isn't here gives pugixml's own handles, which
/// convert to these.
template <class TBase>
class TNodeAccess : public TBase {
    using CNode = pugi::xml_node;
    using CAttribute = pugi::xml_attribute;

public:
    using TBase::TBase;

    xml_text text() const;

    xml_attribute attribute(char_t const * name) const;
    xml_attribute first_attribute() const;
    xml_attribute last_attribute() const;
    xml_attribute append_attribute(char_t const * name);
    xml_attribute prepend_attribute(char_t const * name);
    xml_attribute insert_attribute_after(char_t const * name, CAttribute const & place);
    xml_attribute insert_attribute_before(char_t const * name, CAttribute const & place);

    xml_node child(char_t const * name) const;
    xml_node first_child() const;
    xml_node last_child() const;
    xml_node next_sibling() const;
    xml_node next_sibling(char_t const * name) const;
    xml_node previous_sibling() const;
    xml_node previous_sibling(char_t const * name) const;
    xml_node parent() const;
    xml_node root() const;
    xml_node first_element_by_path(char_t const * path, char_t delimiter = '/') const;
    xml_node find_child_by_attribute(char_t const * name, char_t const * attribute, char_t const * value) const;
    xml_node find_child_by_attribute(char_t const * attribute, char_t const * value) const;

    xml_node append_child(char_t const * name);
    xml_node append_child(xml_node_type type = node_element);
    xml_node prepend_child(char_t const * name);
    xml_node prepend_child(xml_node_type type = node_element);
    xml_node insert_child_after(char_t const * name, CNode const & place);
    xml_node insert_child_after(xml_node_type type, CNode const & place);
    xml_node insert_child_before(char_t const * name, CNode const & place);
    xml_node insert_child_before(xml_node_type type, CNode const & place);
    xml_node append_copy(CNode const & original);
    xml_attribute append_copy(CAttribute const & original);
    xml_node prepend_copy(CNode const & original);
    xml_attribute prepend_copy(CAttribute const & original);

    xpath_node select_node(char_t const * query, xpath_variable_set * variables = nullptr) const;
    xpath_node select_node(xpath_query const & query) const;
};

// The bases are as visible as their own arguments are unless it is said here, in front of their first use.
extern template class VLK_API TNodeAccess<pugi::xml_node>;
extern template class VLK_API TNodeAccess<pugi::xml_document>;

/// Handle of a node; the document owns it.
class VLK_API xml_node : public TNodeAccess<pugi::xml_node> {
public:
    using TNodeAccess::TNodeAccess;
    xml_node() noexcept = default;
    xml_node(pugi::xml_node const & node) noexcept : TNodeAccess(node.internal_object()) {}

    using pugi::xml_node::set_value;
    /// False on an empty handle, without memory, and on a node that has no value.
    bool set_value(std::string const & value);
};

/// What an XPath query found: a node, or an attribute and its node.
class xpath_node : public pugi::xpath_node {
public:
    xpath_node() = default;
    xpath_node(pugi::xpath_node const & found) : pugi::xpath_node(found) {}

    xml_node node() const { return pugi::xpath_node::node(); }
    xml_attribute attribute() const { return pugi::xpath_node::attribute(); }
    xml_node parent() const { return pugi::xpath_node::parent(); }
};

/// Owner of a tree of nodes.
class VLK_API xml_document : public TNodeAccess<pugi::xml_document> {
public:
    // By its full name: the bare one is the base class here.
    XML::xml_node document_element() const;

    using pugi::xml_document::save_file;
    /// False when the file can't be written.
    bool save_file(std::string const & path, char_t const * indent = "\t", unsigned int flags = format_default,
                   xml_encoding encoding = encoding_auto) const;
};

// All of it stands here: a compiler for Windows doesn't export what stands inside of the class.
template <class TBase>
xml_text TNodeAccess<TBase>::text() const
{
    return TBase::text();
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::attribute(char_t const * name) const
{
    return TBase::attribute(name);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::first_attribute() const
{
    return TBase::first_attribute();
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::last_attribute() const
{
    return TBase::last_attribute();
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::append_attribute(char_t const * name)
{
    return TBase::append_attribute(name);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::prepend_attribute(char_t const * name)
{
    return TBase::prepend_attribute(name);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::append_copy(CAttribute const & original)
{
    return TBase::append_copy(original);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::prepend_copy(CAttribute const & original)
{
    return TBase::prepend_copy(original);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::insert_attribute_after(char_t const * name, CAttribute const & place)
{
    return TBase::insert_attribute_after(name, place);
}
template <class TBase>
xml_attribute TNodeAccess<TBase>::insert_attribute_before(char_t const * name, CAttribute const & place)
{
    return TBase::insert_attribute_before(name, place);
}
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
xml_node TNodeAccess<TBase>::previous_sibling() const
{
    return TBase::previous_sibling();
}
template <class TBase>
xml_node TNodeAccess<TBase>::previous_sibling(char_t const * name) const
{
    return TBase::previous_sibling(name);
}
template <class TBase>
xml_node TNodeAccess<TBase>::parent() const
{
    return TBase::parent();
}
template <class TBase>
xml_node TNodeAccess<TBase>::root() const
{
    return TBase::root();
}
template <class TBase>
xml_node TNodeAccess<TBase>::first_element_by_path(char_t const * path, char_t delimiter) const
{
    return TBase::first_element_by_path(path, delimiter);
}
template <class TBase>
xml_node TNodeAccess<TBase>::find_child_by_attribute(char_t const * name, char_t const * attribute,
                                                     char_t const * value) const
{
    return TBase::find_child_by_attribute(name, attribute, value);
}
template <class TBase>
xml_node TNodeAccess<TBase>::find_child_by_attribute(char_t const * attribute, char_t const * value) const
{
    return TBase::find_child_by_attribute(attribute, value);
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
template <class TBase>
xml_node TNodeAccess<TBase>::insert_child_after(char_t const * name, CNode const & place)
{
    return TBase::insert_child_after(name, place);
}
template <class TBase>
xml_node TNodeAccess<TBase>::insert_child_after(xml_node_type type, CNode const & place)
{
    return TBase::insert_child_after(type, place);
}
template <class TBase>
xml_node TNodeAccess<TBase>::insert_child_before(char_t const * name, CNode const & place)
{
    return TBase::insert_child_before(name, place);
}
template <class TBase>
xml_node TNodeAccess<TBase>::insert_child_before(xml_node_type type, CNode const & place)
{
    return TBase::insert_child_before(type, place);
}
template <class TBase>
xml_node TNodeAccess<TBase>::append_copy(CNode const & original)
{
    return TBase::append_copy(original);
}
template <class TBase>
xml_node TNodeAccess<TBase>::prepend_copy(CNode const & original)
{
    return TBase::prepend_copy(original);
}
template <class TBase>
xpath_node TNodeAccess<TBase>::select_node(char_t const * query, xpath_variable_set * variables) const
{
    return TBase::select_node(query, variables);
}
template <class TBase>
xpath_node TNodeAccess<TBase>::select_node(xpath_query const & query) const
{
    return TBase::select_node(query);
}

} // namespace VLK::XML

#endif
