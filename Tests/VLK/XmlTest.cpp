#include "VLK/Xml.h"

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>
#include <sstream>
#include <string>

using namespace VLK;

namespace {

TEST(XmlTest, StandardStringsGoInEverywhere)
{
    XML::xml_document document;
    XML::xml_node root = document.append_child("root");
    EXPECT_TRUE(root.append_attribute("name").set_value(std::string("v\xC3\xA4lue")));
    EXPECT_TRUE(root.append_child("text").text().set(std::string("a < b")));
    EXPECT_TRUE(root.append_child(XML::node_comment).set_value(std::string("note")));
    std::string const file = (boost::filesystem::temp_directory_path() / boost::filesystem::unique_path()).string();
    EXPECT_TRUE(document.save_file(file));

    XML::xml_document read;
    EXPECT_TRUE(read.load_file(file.c_str()));
    EXPECT_STREQ("v\xC3\xA4lue", read.document_element().attribute("name").value());
    EXPECT_STREQ("a < b", read.child("root").child("text").text().get());
    EXPECT_STREQ("a < b", read.select_node("/root/text").node().child_value());
    boost::filesystem::remove(file);
    EXPECT_FALSE(document.save_file(std::string("/nowhere/at/all.xml")));
}

TEST(XmlTest, EmptyHandlesTakeNothing)
{
    EXPECT_FALSE(XML::xml_attribute().set_value(std::string("x")));
    EXPECT_FALSE(XML::xml_node().set_value(std::string("x")));
    EXPECT_FALSE(XML::xml_node().text().set(std::string("x")));
}

TEST(XmlTest, EveryWayToAHandleTakesStandardStrings)
{
    std::string const value = "v";
    XML::xml_document document;
    XML::xml_node const root = document.append_child("root");
    XML::xml_node middle = document.document_element().append_child("middle");
    EXPECT_TRUE(document.document_element().insert_child_before("first", middle).text().set(value));
    EXPECT_TRUE(document.document_element().insert_child_after(XML::node_comment, middle).set_value(value));
    EXPECT_TRUE(middle.append_attribute("b").set_value(value));
    EXPECT_TRUE(middle.insert_attribute_before("a", middle.first_attribute()).set_value(value));
    EXPECT_TRUE(middle.insert_attribute_after("c", middle.last_attribute()).set_value(value));
    EXPECT_TRUE(middle.first_attribute().next_attribute().set_value(std::string("w")));
    EXPECT_TRUE(middle.previous_sibling().text().set(std::string("one")));
    EXPECT_TRUE(middle.next_sibling().set_value(std::string("note")));
    EXPECT_TRUE(document.document_element().prepend_copy(middle).attribute("a").set_value(std::string("copy")));
    EXPECT_TRUE(document.select_node("//middle[2]/@c").attribute().set_value(std::string("found")));
    EXPECT_TRUE(document.select_node("//first").node().text().set(std::string("two")));
    EXPECT_TRUE(middle.root().first_element_by_path("root/first").append_attribute("d").set_value(value));
    EXPECT_TRUE(root.find_child_by_attribute("d", "v").attribute("d").set_value(std::string("by attribute")));

    std::ostringstream text;
    document.save(text, "", XML::format_raw | XML::format_no_declaration);
    EXPECT_EQ("<root><middle a=\"copy\" b=\"w\" c=\"v\"/><first d=\"by attribute\">two</first>"
              "<middle a=\"v\" b=\"w\" c=\"found\"/><!--note--></root>",
              text.str());
}

TEST(XmlTest, ValuesAreAssignedInPlace)
{
    XML::xml_document document;
    XML::xml_node root = document.append_child("root");
    root.append_attribute("text") = std::string("t");
    root.append_attribute("literal") = "l";
    root.append_attribute("number") = 42;
    root.append_attribute("flag") = true;
    root.text() = std::string("inside");
    XML::xml_attribute other = root.attribute("number");
    other = root.attribute("flag"); // a handle: the attributes stay as they are
    EXPECT_STREQ("flag", other.name());

    std::ostringstream text;
    document.save(text, "", XML::format_raw | XML::format_no_declaration);
    EXPECT_EQ("<root text=\"t\" literal=\"l\" number=\"42\" flag=\"true\">inside</root>", text.str());
}

} // namespace
