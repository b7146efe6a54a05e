// The users of the suite, their offices and their mail.
#pragma once

#include <memory>
#include <string>

#include "adapters/suite/installation.h"
#include "automation/class_info.h"
#include "automation/collection.h"

namespace talvex::adapters::suite {

// Reads the tables SUITEUSER and SUITEOFFICE, on a connection of its own for every call, and puts mail into
// the outbox.
class SuiteUserService final : public automation::Object {
  TALVEX_CLASS(SuiteUserService, "Mirelo.User", "The users of the suite, their offices and their mail.");

 public:
  explicit SuiteUserService(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(
      void, SendMail,
      (const std::string& from, const std::string& to, const std::string& subject, const std::string& body),
      "Mails a text from one user to another, both given by id: one file in the folder outbox, which inside "
      "a transaction becomes final when the transaction commits and vanishes when it does not. Without an "
      "addressee nothing is sent, and the log says so. A user who is unknown, or without an e-mail address "
      "that mail can be sent to, raises 5; a mail that cannot be written raises as well.");
  TALVEX_METHOD(std::shared_ptr<automation::Collection>, Offices, (),
                "The descriptions of all administrative offices, in ascending order.");
  TALVEX_METHOD(bool, Exists, (const std::string& user), "Whether there is a user of that id.");

 private:
  std::shared_ptr<const Installation> installation_;
};

}  // namespace talvex::adapters::suite
