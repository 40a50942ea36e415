#include "Module.h"

#include <VLK/Xml.h>
#include <string_view>

#include "Uses.h"

using namespace VLK;

void UseXml(std::string const & directory)
{
    std::string const path = directory + "/sensors.xml";
    XML::xml_document document;
    XML::xml_node sensor = document.append_child("sensors").append_child("sensor");
    REQUIRE(sensor.append_attribute("name").set_value(std::string("intake")));
    REQUIRE(sensor.append_child("value").text().set(std::string("293150")));
    REQUIRE(document.save_file(path));

    XML::xml_document read;
    REQUIRE(static_cast<bool>(read.load_file(path.c_str())));
    XML::xml_node const found = read.select_node("/sensors/sensor[@name='intake']").node();
    REQUIRE(std::string_view(found.child("value").text().get()) == "293150");
    REQUIRE(std::string_view(read.document_element().name()) == "sensors");
}
