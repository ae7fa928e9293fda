// The manual pages of the program, out of its commands.
#include "tools/Manual.h"

#include <algorithm>
#include <cctype>

#include "tools/OptionText.h"

namespace lirvox::tools {
namespace {

// Text for roff: hyphens and quotes to be pasted into a shell, and no line that it takes for
// a request.
std::string roff(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if ((result.empty() || result.back() == '\n') && (character == '.' || character == '\'')) {
      result += "\\&";
    }
    switch (character) {
      case '\\':
        result += "\\e";
        break;
      case '-':
        result += "\\-";
        break;
      case '\'':
        result += "\\(aq";
        break;
      case '`':
        result += "\\(ga";
        break;
      case '^':
        result += "\\(ha";
        break;
      case '~':
        result += "\\(ti";
        break;
      default:
        result += character;
    }
  }
  return result;
}

std::string bold(const std::string& text) {
  return "\\fB" + roff(text) + "\\fR";
}

std::string italic(const std::string& text) {
  return "\\fI" + roff(text) + "\\fR";
}

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
    return static_cast<char>(std::toupper(character));
  });
  return text;
}

// A sentence as the line under "NAME" has it.
std::string asName(std::string text) {
  text.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(text.front())));
  if (text.back() == '.') text.pop_back();
  return text;
}

std::string heading(const std::string& name, const Program& program, const std::string& summary) {
  return ".TH " + roff(upperCase(name)) + " 1 \"\" \"Lirvox " + roff(program.version) +
         "\" \"Lirvox manual\"\n.nh\n.ad l\n.SH NAME\n" + roff(name) + " \\- " +
         roff(asName(summary)) + "\n";
}

std::string listing(const std::string& lines) {
  return ".nf\n" + roff(lines) + "\n.fi\n";
}

// A part of a command's details: a paragraph, or a section if it begins with its name and a
// colon, as in "Examples:".
struct Part {
  std::string section;
  std::string text;
};

std::vector<Part> partsOf(const std::string& details) {
  std::vector<Part> parts;
  for (const std::string& paragraph : split(details, "\n\n")) {
    Part part{{}, paragraph};
    for (const char* const name : {"Examples", "Example", "Exit status", "JSON"}) {
      const std::string start = std::string(name) + ':';
      if (paragraph.rfind(start, 0) != 0) continue;
      part.section = upperCase(name);
      part.text = paragraph.substr(paragraph.find_first_not_of(" \n", start.size()));
      if (part.section == "JSON") part.text.front() = upperCase(part.text.substr(0, 1)).front();
    }
    // The first line of a listing has lost its margin.
    if (part.section.rfind("EXAMPLE", 0) == 0) part = {"EXAMPLES", "  " + part.text};
    parts.push_back(part);
  }
  return parts;
}

std::string body(const Part& part) {
  const bool isListing = part.text.rfind("  ", 0) == 0;
  return isListing ? listing(part.text) : roff(part.text) + '\n';
}

std::string sections(const std::vector<Part>& parts) {
  std::string text;
  for (const Part& part : parts) {
    if (!part.section.empty()) text += ".SH " + part.section + '\n' + body(part);
  }
  return text;
}

std::string inSynopsis(const Option& option) {
  std::string text = isArgument(option) ? italic(option.names) : bold(namesOf(option).front());
  const std::string value = valueName(option);
  if (!isArgument(option) && !value.empty()) text += "\\ " + italic(value);
  if (!option.required) text = '[' + text + ']';
  return repeats(option) ? text + "..." : text;
}

std::string inOptions(const Option& option) {
  std::string text = ".TP\n";
  if (isArgument(option)) {
    text += italic(option.names);
  } else {
    const std::string value = valueName(option);
    const char* between = "";
    for (const std::string& name : namesOf(option)) {
      text += between + bold(name);
      between = ", ";
    }
    if (!value.empty()) text += ' ' + italic(value);
  }
  text += '\n' + roff(option.help) + '.';
  const std::string standard = defaultText(option);
  if (!standard.empty()) text += "\nDefault: " + roff(standard) + '.';
  return text + '\n';
}

std::string seeAlso(const Program& program, const std::string& except) {
  std::string text = ".SH SEE ALSO\n";
  const char* between = "";
  const auto add = [&](const std::string& page) {
    if (page != except) text += between + bold(page) + "(1)", between = ",\n";
  };
  add("lirvox");
  for (const Command& command : program.commands) add("lirvox-" + command.name);
  return text + '\n';
}

}  // namespace

std::string manualPage(const Program& program) {
  std::string text = heading("lirvox", program, program.summary);
  text += ".SH SYNOPSIS\n" + bold("lirvox") + ' ' + italic("COMMAND") + " [" + italic("OPTIONS") +
          "]\n.br\n" + bold("lirvox") + ' ' + bold("--help") + " | " + bold("--version") +
          "\n.SH DESCRIPTION\n" + roff(program.summary) +
          "\nEach command has a manual page of its own, and " + bold("lirvox") + ' ' +
          italic("COMMAND") + ' ' + bold("--help") + " is a short one.\n.SH COMMANDS\n";
  for (const Command& command : program.commands) {
    text += ".TP\n" + bold(command.name) + '\n' + roff(command.summary) + ".\n";
  }
  return text + sections(partsOf(program.details)) + seeAlso(program, "lirvox");
}

std::string manualPage(const Program& program, const Command& command) {
  const std::string name = "lirvox-" + command.name;
  std::vector<Part> parts = partsOf(command.details);
  std::string text = heading(name, program, command.summary);
  text += ".SH SYNOPSIS\n" + bold("lirvox " + command.name);
  for (const Option& option : command.options) text += '\n' + inSynopsis(option);
  text += "\n.SH DESCRIPTION\n" + roff(command.summary) + ".\n";
  for (const Part& part : parts) {
    if (part.section.empty()) text += ".PP\n" + body(part);
  }
  text += ".SH OPTIONS\n";
  for (const Option& option : command.options) text += inOptions(option);
  text += inOptions(helpOption());
  // A command that says nothing of its exit status keeps to the program's.
  const auto isStatus = [](const Part& part) { return part.section == "EXIT STATUS"; };
  if (std::none_of(parts.begin(), parts.end(), isStatus)) {
    const std::vector<Part> general = partsOf(program.details);
    std::copy_if(general.begin(), general.end(), std::back_inserter(parts), isStatus);
  }
  return text + sections(parts) + seeAlso(program, name);
}

}  // namespace lirvox::tools
