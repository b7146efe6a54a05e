// Values of the component as JSON, for the gateway and for the command line.
//
//   null                        Null                      {"$empty": true}            Empty
//   true, false                 Boolean                   "text"                      String
//   7                           Int32, when it fits       7.5, 7.0, 3000000000        Double
//   {"$date": "2026-11-21"}     Date                      {"$date": "2026-11-21T14:30:05"}
//   {"$currency": "12.3400"}    Currency                  [1, "a"]                    Array
//   {"$dictionary": [["key", item], ..]}                  a Dictionary
//   {"$collection": [["key", item], [null, item], ..]}    a Collection, null for an item without a key
//   {"$xml": "<a/>"}            an XML document read from the text, with its parse error when it is none
//   {"$xml": "<a><b/></a>", "$node": "//b"}               the first node that the expression selects from it
//   {"$object": 3}                                        the object of that number
#pragma once

#include <stdexcept>

#include "apps/rpc/json.h"
#include "apps/rpc/objects.h"
#include "automation/variant.h"

namespace talvex::apps::rpc {

// What a client sent does not have the form that it must have; the text names the thing that is wrong.
class InvalidParams : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The value that the JSON says. Raises InvalidParams for one that says none: an object that is not of the
// forms above, a date that does not exist, an amount that a Currency cannot hold exactly, a key used twice,
// an unknown object, a node that is not there.
[[nodiscard]] automation::Variant ReadValue(const Json& json, const ObjectTable& objects);

// The JSON that says the value. A Dictionary or a Collection is written with its items, unless the client
// knows it by number already. Any other object is written by its number, a new one when it has none; so is a
// container that comes up again inside the same value, or lies so deep that the answer could not be read. An
// object that is not set is
// {"$empty": true}. A number that is not finite has no form in JSON and raises error 6.
[[nodiscard]] Json WriteValue(const automation::Variant& value, ObjectTable& objects);

}  // namespace talvex::apps::rpc
