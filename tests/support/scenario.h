// Scenarios: scripts that set up an installation, call the component, and say what must come of it.
//
// A file holds scenarios, each begun by a line "scenario TITLE". A command stands at the beginning of its
// line; what is expected of it stands in the indented lines below it. "#" begins a comment line.
//
//   now 2026-03-15T10:00:00                 the clock, instead of 2026-03-16T10:00:00; first in its scenario
//   user ID LOCALE                          a user of the suite, with the address ID@example.com
//   currency CODE DECIMALS [RATE]           a currency, and its rate from 2020-01-01 on
//   budget CODE COLUMN=value ...            a budget; standard, in EUR, when not said otherwise
//   line CODE FROM..TO AMOUNT COLUMN=v ...  a budget line; "FROM.." for one without an end date
//   under PARENT CHILD ...                  the children of a parent
//   warnings on|off                         the site's switch for warning mails
//   sql STATEMENT                           anything else
//   begin | end OUTCOME | rollback          a transaction around the commands between
//   call CLASS METHOD argument ...          a late-bound call on a new object; arguments as in values.h
//     -> VALUE                              its result,
//     out NAME VALUE                        and what an argument holds afterwards,
//     has NAME VALUE                        or a property of the object
//     -> error NUMBER                       or the error that it raises,
//     source TEXT                           with that source,
//     description TEXT                      and these lines of description (line ends as "\r\n" are shown as
//     line breaks)
//   rows QUERY                              the rows of a query, one a line, cells joined by " | "; no line
//                                           for no row
//   mails COUNT                             how many mails the outbox holds,
//     TEXT                                  and the last one: To, Subject and the body's lines
//   log COUNT                               how many entries the error log holds
//   snapshot | unchanged                    remembers every row of every table | compares
#pragma once

#include <string>
#include <vector>

namespace talvex::test {

struct ScenarioCommand {
  int line = 0;
  std::string verb;
  std::string rest;
  std::vector<std::string> expected;
};

struct Scenario {
  std::string file;
  std::string title;
  std::vector<ScenarioCommand> commands;
};

// Raises std::runtime_error, naming file and line, for a file that is no scenario file.
[[nodiscard]] std::vector<Scenario> ReadScenarios(const std::string& path);

// Runs a scenario on an installation and a thread of its own; failures are those of the test framework.
void RunScenario(const Scenario& scenario);

}  // namespace talvex::test
