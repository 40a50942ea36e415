#include "VLK/Xml.h"

#include <gtest/gtest.h>

#include <boost/filesystem/operations.hpp>
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

} // namespace
