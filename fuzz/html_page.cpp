// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/html_page.h"

#include <gumbo.h>

namespace fuzz {

namespace {

/// Adds a node with what is in it to the structure.
void add(const GumboNode& node, bool isInData, HtmlPage& page);

void addElement(const GumboElement& element, HtmlPage& page) {
  bool isData = false;
  // An element that HTML does not know has no name but the one that was written.
  page.structure += '<';
  if (element.tag == GUMBO_TAG_UNKNOWN) {
    page.structure += std::string_view(element.original_tag.data, element.original_tag.length);
  }
  page.structure += gumbo_normalized_tagname(element.tag);
  for (unsigned i = 0; i < element.attributes.length; ++i) {
    const auto& attribute = *static_cast<const GumboAttribute*>(element.attributes.data[i]);
    const std::string_view name = attribute.name;
    const std::string_view value = attribute.value;
    isData |= name == "id" && value == "data";
    page.structure.append(" ").append(name).append("=\"").append(value).append("\"");
  }
  page.structure += '>';
  for (unsigned i = 0; i < element.children.length; ++i) {
    add(*static_cast<const GumboNode*>(element.children.data[i]), isData, page);
  }
  page.structure += "</>";
}

void add(const GumboNode& node, bool isInData, HtmlPage& page) {
  switch (node.type) {
    case GUMBO_NODE_ELEMENT:
    case GUMBO_NODE_TEMPLATE:
      addElement(node.v.element, page);
      break;
    case GUMBO_NODE_COMMENT:
      page.structure.append("<!--").append(node.v.text.text).append("-->");
      break;
    default:
      (isInData ? page.data : page.structure) += node.v.text.text;
      break;
  }
}

}  // namespace

HtmlPage parseHtml(std::string_view text) {
  GumboOutput* parsed = gumbo_parse_with_options(&kGumboDefaultOptions, text.data(), text.size());
  HtmlPage page{.errors = parsed->errors.length};
  const GumboDocument& document = parsed->document->v.document;
  for (unsigned i = 0; i < document.children.length; ++i) {
    add(*static_cast<const GumboNode*>(document.children.data[i]), false, page);
  }
  gumbo_destroy_output(&kGumboDefaultOptions, parsed);
  return page;
}

}  // namespace fuzz
