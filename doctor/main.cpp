// Answers "why does nothing move?".

#include <iostream>

#include <CLI/CLI.hpp>

#include "findings.h"

constexpr auto kReplace = doctor::Json::error_handler_t::replace; // bytes that aren't UTF-8

int main(int count, char** arguments) try {
  CLI::App app("Looks at all that the Orvaner plug-in needs, and says why nothing moves. Changes nothing "
               "without a command.\nStatus: 0 if all is well, 1 if something was found, 2 if something "
               "couldn't be looked at or done.",
               "ov_doctor");
  app.allow_windows_style_options(false); // a path may begin with a slash there too
  bool isJson = false;
  std::string module, file;
  app.add_flag("--json", isJson, "write the report for machines");
  app.add_option("--module", module, "the plug-in's file (default: beside this program)");
  const CLI::App* const watchP =
      app.add_subcommand("watch", "show what the device sends, until Ctrl-C; disturbs no plug-in");
  const CLI::App* const defaultsP =
      app.add_subcommand("defaults", "write a fresh settings file, keep the old one as .bak, and look again");
  CLI::App* const reportP = app.add_subcommand(
      "report", "pack log, settings, menu file and findings, without the user's name and folder");
  reportP->add_option("FILE.zip", file, "file to write")->required();
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }

  doctor::Report report(module);
  if (*watchP)
    doctor::watch(report);
  if (*defaultsP)
    doctor::writeDefaults(report);
  const int status = report.examine();
  if (*reportP)
    doctor::writeReport(report, file);
  else
    std::cout << (isJson ? report.mData.dump(2, ' ', false, kReplace) + "\n" : report.text()) << std::flush;
  return status;
} catch (const std::exception& error) {
  std::cerr << "ov_doctor: " << error.what() << '\n';
  return 2;
}
