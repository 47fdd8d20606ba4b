// Where a validating parse may read a grammar (external DTD subset, its
// parameter entities, schemas) that a document names: regular local files
// inside the grammar directories, never a network address.
#ifndef CBLXML_XEXML_GRAMMAR_FILES_H
#define CBLXML_XEXML_GRAMMAR_FILES_H

#include <string>
#include <vector>

namespace cblxml {

// The grammar directories, canonical: the colon-separated list in the
// environment variable CBLXML_GRAMMAR_PATH, or the current directory when it
// is not set. Directories that do not exist are left out.
std::vector<std::string> grammar_directories();

// The local path that `systemId` (a path, or a file: URL) names, relative
// ones resolved against the directory of `base` (a path or file: URL) or,
// when the base is not local (a document held in memory), against the
// current directory. Empty when the identifier names anything but a local
// file (http:, ftp:, a remote file: host, ...).
std::string grammar_path(const std::string &systemId, const std::string &base);

// A grammar file read whole: its canonical path (the base of what it names
// in turn) and its bytes.
struct GrammarFile {
    std::string path;
    std::string bytes;
};

// Reads `path` when, after every link is followed, it is a regular file of
// at most kGrammarMaxBytes inside one of `directories`. False, with nothing
// read, otherwise: devices, FIFOs and directories are never opened for
// reading, so a document cannot make a parse wait on one.
bool read_grammar(const std::string &path, const std::vector<std::string> &directories,
                  GrammarFile &out);

constexpr size_t kGrammarMaxBytes = 16u << 20;

}  // namespace cblxml

#endif
