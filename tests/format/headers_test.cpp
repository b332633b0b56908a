// The headers that clients include need no header of the parser, because a system
// with only the library has none.
#include <gtest/gtest.h>

#include "db/kpt/kpt.h"

#ifdef BOOST_CONFIG_HPP
#error "kpt.h pulls in Boost"
#endif

#include "db/kpt/kpt_xml_element.h"
#include "db/kpt/kpt_xml_reader.h"
#include "db/kpt/kpt_xml_writer.h"

#ifdef XERCES_CPP_NAMESPACE
#error "a header of the library pulls in the parser"
#endif

TEST(Headers, KeepTheParserOutOfClients) { EXPECT_TRUE(KPT_XML_ELEMENT().is_null()); }
