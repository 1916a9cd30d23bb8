// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Input: a boundary, the byte 31, and the data of an upload; an invalid boundary is replaced by the
// program's own. Properties: the form is its data between a head and a tail, and a library that
// reads such forms gets one file with the same names and bytes, unless the data holds the boundary.

#include <gmime/gmime.h>

#include <algorithm>
#include <memory>
#include <string>

#include "fuzz/support.h"
#include "report/multipart.h"

namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

// What needs no quotes in the media type.
bool isBoundaryCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         std::string_view("'+_-.").find(c) != std::string_view::npos;
}

std::string_view boundaryFrom(std::string_view field) {
  const bool isOne = !field.empty() && field.size() <= 70 &&
                     std::all_of(field.begin(), field.end(), isBoundaryCharacter);
  return isOne ? field : std::string_view("0xKhTmLbOuNdArY");
}

// Whether a line of `data` begins as a boundary does. Readers disagree on what ends a line.
bool holdsBoundary(const std::string& data, const std::string& boundary) {
  for (const char* lineEnd : {"\n", "\r"}) {
    if (("\n" + data).find(lineEnd + ("--" + boundary)) != std::string::npos) {
      return true;
    }
  }
  return false;
}

bool isText(const char* text, std::string_view expected) {
  return text != nullptr && expected == text;
}

std::string contentOf(GMimePart* part) {
  const Owned<GMimeStream> stream(g_mime_stream_mem_new());
  g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), stream.get());
  const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
  return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

void checkReading(const std::string& contentType, const std::string& body,
                  const std::string& data) {
  const std::string request = "Content-Type: " + contentType + "\r\n\r\n" + body;
  const Owned<GMimeStream> stream(
      g_mime_stream_mem_new_with_buffer(request.data(), request.size()));
  const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const Owned<GMimeObject> form(g_mime_parser_construct_part(parser.get(), nullptr));
  fuzz::check(GMIME_IS_MULTIPART(form.get()), "the form is one");
  GMimeMultipart* parts = GMIME_MULTIPART(form.get());
  fuzz::check(g_mime_multipart_get_count(parts) == 1, "the form has one part");
  GMimeObject* part = g_mime_multipart_get_part(parts, 0);
  fuzz::check(GMIME_IS_PART(part), "the part is data");
  GMimeContentDisposition* disposition = g_mime_object_get_content_disposition(part);
  fuzz::check(
      isText(g_mime_content_disposition_get_disposition(disposition), "form-data") &&
          isText(g_mime_content_disposition_get_parameter(disposition, "name"), "file") &&
          isText(g_mime_content_disposition_get_parameter(disposition, "filename"), "test.bin"),
      "the part is the file");
  fuzz::check(contentOf(GMIME_PART(part)) == data, "the file is the data");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isReady [[maybe_unused]] = (g_mime_init(), true);
  const std::string_view input = fuzz::asText(data, size);
  fuzz::Fields fields(input, '\x1F');
  const std::string boundary(boundaryFrom(fields.next()));
  const std::string content(fields.atEnd() ? input : input.substr(input.find('\x1F') + 1));

  const auto [url, contentType, body] = report::postRequestWithURL("", boundary, content);
  const std::string expected =
      "--" + boundary +
      "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"test.bin\"\r\n\r\n" + content +
      "\r\n--" + boundary + "--\r\n";
  fuzz::check(body == expected, "the form is its data between a head and a tail");
  if (!holdsBoundary(content, boundary)) {
    checkReading(contentType, body, content);
  }
  return 0;
}
