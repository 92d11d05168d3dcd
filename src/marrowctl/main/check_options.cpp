#include "marrowctl/main/option_set.h"

namespace marrowbench::ctl {

Command readCheck(const Subcommand& self, Arguments arguments) {
  CheckCommand check;
  bool isJson = false;
  std::string format;
  OptionSet options(self, " FILE...");
  options.names("--host", check.hosts, "NAME", "A client, by its host name; may be given again");
  options.names("--hosts", check.hostLists, "LIST",
                "Clients: a file of names, or names as c1,c[02-10]");
  options.number("--clients", check.clients, 1, kMostClients, "N",
                 "How many clients there are; default: as many as are named");
  options.flag("--strict", check.isStrict, "Warnings count: exit status 1");
  options.flag("--summary", check.isSummary, "Totals and findings only");
  options.flag("--json", isJson, "One JSON document");
  options.choice("--format", format, "FORMAT", "text, or gcc: findings as compilers print them",
                 {"text", "gcc"});
  options.exclude("--format", "--json");
  options.text("--explain", check.explained, "NAME", "The story behind a finding, with an example");
  options.footer(
      "A FILE may be a folder of settings files, or - for the standard input.\n\n"
      "Example: will these 20 clients get in each other's way?\n"
      "  marrowctl check --hosts 'c[01-20]' many_clients.bst\n");
  if (const auto outcome = options.parse(arguments)) return *outcome;
  if (isJson) check.format = CheckFormat::json;
  if (format == "gcc") check.format = CheckFormat::gcc;
  check.files = options.words;
  if (check.files.empty() && check.explained.empty()) return options.wrong("name a settings file");
  return check;
}

}  // namespace marrowbench::ctl
