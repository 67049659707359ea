#ifndef CNFG_H
#define CNFG_H

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

/// Reads and changes a text file of sections and parameters:
///
///     [SECTION]
///         name = value     # comment
///
/// Names compare exactly, case included. "=" and tab separate a name from its value; a value ends at "#" or
/// at the line's end. In reading, a section ends at the first line that has no name and doesn't start with
/// "#" in its first column; so a blank line ends it.
///
/// Operations return a code and store it in mError; they throw nothing of their own and don't log. After a
/// failed open() call only errorText(). An object belongs to one thread.
class Cnfg {
public:
  enum Code : std::int32_t {
    kOk = 0,
    kNoFile = 1,          // the file can't be opened
    kNoSection = 2,       // no such section
    kNoParameter = 3,     // no such parameter
    kNoMoreParameters = 4 // the section has no further parameter
  };

  Cnfg();
  /// Opens a file as open() does, with its code in status.
  Cnfg(const std::string& fileName, int& status);

  /// Opens a file for reading. Other processes may hold it open at the same time.
  int open(const std::string& fileName);

  /// Moves the read position to the line after the first section of that name.
  int selectSection(const std::string& section);
  /// Reads the next parameter from the read position. A line without a name is consumed and returns 4; name
  /// is empty then, and so is value, unless the line begins with a separator. Once a read has met the file's
  /// end, further calls return 4 and leave both as they are.
  /// trim  removes blanks and tabs from both ends of the value
  int readNextParameter(std::string& name, std::string& value, bool trim);
  /// Looks a parameter up by name; the first of two with one name wins.
  /// section  empty: the search goes on from the read position
  int readParameter(const std::string& name, std::string& value, const std::string& section, bool trim);
  /// Reads the parameter at a position in a section.
  /// index  from 0
  int readParameterAt(std::string& name, std::string& value, const std::string& section, unsigned index,
                      bool trim);

  /// Returns the text for mError, with what was searched for.
  std::string errorText() const;

  /// Sets a parameter's value, in memory. Blank lines don't end the section here.
  /// section  empty: the search goes on after the line of the last writing operation
  /// value    written as it is; reading ends it at a "#"
  int writeParameter(const std::string& name, const std::string& value, const std::string& section);
  /// Replaces a line of a section by a parameter, in memory.
  /// name    a name as readNextParameter would read it: no separator, no "#" or "[" at its start
  /// offset  number of lines after the section's first line
  int writeParameterAt(const std::string& name, const std::string& value, const std::string& section,
                       unsigned offset);
  /// Writes what the writing operations have changed to the file. Returns 1 if it can't be opened or written.
  int save();

  char mCommentChar;
  std::string mSeparators;
  std::string mLineEnds; // what ends a value
  std::string mFileName;
  std::string mSection;   // of the last search, for messages
  std::string mParameter; // of the last search, for messages
  std::fstream mFile;     // open for reading during the object's whole life; its read position is the state
  bool mIsLoaded;         // mLines holds the file
  std::int32_t mError;    // code of the last operation
  std::uint32_t mLineIndex;
  std::vector<std::string> mLines; // for the writing operations only

private:
  /// Where the pieces of a parameter line begin. Blanks and tabs come before the name.
  struct Places {
    std::size_t name = 0;
    std::size_t nameEnd = 0;   // blanks at its end left out
    std::size_t separator = 0; // the run of separators
    std::size_t value = 0;     // untrimmed
    std::size_t tail = 0;      // from the first value end on
  };

  enum class Kind { Blank, Comment, Section, Parameter };

  int setError(std::int32_t code);
  bool readLine(std::string& line);
  Kind kindOf(const std::string& line) const;
  bool isSectionLine(const std::string& line, const std::string& section) const;
  Places placesIn(const std::string& line) const;
  void cutNameAndValue(const std::string& line, std::string& name, std::string& value) const;
  void load();
  bool findSectionLine(const std::string& section);
  void rebuildLine(std::string& line, const std::string& name, const std::string& value) const;
};

#endif
