#include "VLK/Xml.h"

namespace VLK::XML {

bool xml_attribute::set_value(std::string const & value)
{
    return set_value(value.c_str());
}

bool xml_text::set(std::string const & value)
{
    return set(value.c_str());
}

bool xml_node::set_value(std::string const & value)
{
    return set_value(value.c_str());
}

XML::xml_node xml_document::document_element() const
{
    return pugi::xml_document::document_element();
}

bool xml_document::save_file(std::string const & path, char_t const * indent, unsigned int flags,
                             xml_encoding encoding) const
{
    return save_file(path.c_str(), indent, flags, encoding);
}

template class TNodeAccess<pugi::xml_node>;
template class TNodeAccess<pugi::xml_document>;

} // namespace VLK::XML
