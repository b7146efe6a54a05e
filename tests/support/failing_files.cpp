#include "support/failing_files.h"

#include <algorithm>

namespace talvex::test {

void FailingFiles::Pass(Call call, const std::string& path) const {
  calls_.emplace_back(call, path);
  for (Plan& plan : plans_) plan.left -= plan.call == call ? 1 : 0;
  const auto due =
      std::find_if(plans_.begin(), plans_.end(), [](const Plan& plan) { return plan.left == 0; });
  if (due == plans_.end()) return;
  const automation::Error error = due->error;
  plans_.erase(due);
  throw automation::Error(error);
}

bool FailingFiles::Exists(const std::string& path) const {
  Pass(Call::Exists, path);
  return inner_->Exists(path);
}

std::string FailingFiles::Read(const std::string& path) const {
  Pass(Call::Read, path);
  return inner_->Read(path);
}

std::optional<std::string> FailingFiles::Version(const std::string& path) const {
  Pass(Call::Version, path);
  return inner_->Version(path);
}

void FailingFiles::WriteNew(const std::string& path, std::string_view content) {
  Pass(Call::WriteNew, path);
  inner_->WriteNew(path, content);
}

void FailingFiles::Replace(const std::string& path, std::string_view content) {
  Pass(Call::Replace, path);
  inner_->Replace(path, content);
}

void FailingFiles::Append(const std::string& path, std::string_view content) {
  Pass(Call::Append, path);
  inner_->Append(path, content);
}

void FailingFiles::Rename(const std::string& from, const std::string& to) {
  Pass(Call::Rename, from);
  inner_->Rename(from, to);
}

void FailingFiles::Remove(const std::string& path) {
  Pass(Call::Remove, path);
  inner_->Remove(path);
}

void FailingFiles::MakeFolder(const std::string& path) {
  Pass(Call::MakeFolder, path);
  inner_->MakeFolder(path);
}

}  // namespace talvex::test
