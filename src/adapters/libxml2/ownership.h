// Owning and looking at what libxml2 allocates.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace talvex::adapters::libxml2 {

// Frees whatever it is given with the function of the library that is meant for it.
template <auto Free>
struct FreeWith {
  template <class T>
  void operator()(T* object) const noexcept {
    Free(object);
  }
};
using DocumentRef = std::unique_ptr<xmlDoc, FreeWith<xmlFreeDoc>>;
using ParserRef = std::unique_ptr<xmlParserCtxt, FreeWith<xmlFreeParserCtxt>>;
using BufferRef = std::unique_ptr<xmlBuffer, FreeWith<xmlBufferFree>>;
using NodeCopy = std::unique_ptr<xmlNode, FreeWith<xmlFreeNode>>;

// The library's free() is a variable that points to a function.
struct FreeText {
  void operator()(xmlChar* text) const noexcept { xmlFree(text); }
};
using TextRef = std::unique_ptr<xmlChar, FreeText>;

// What the library made; it makes nothing only when memory runs out.
template <class T>
T* Made(T* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

inline std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

inline const xmlChar* Chars(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

}  // namespace talvex::adapters::libxml2
