#include "WrenAssemblyInfoUpdaterAction.h"

#include <exception>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

const char kOnProcessFile[] = "OnProcessFile";
const char kOnProcessEntry[] = "OnProcessEntry";

std::string ArgText(const std::vector<WrenVariant>& args, size_t i) {
  return i < args.size() ? VariantToString(args[i]) : std::string();
}

// Lua's truthiness: anything but nothing and false.
bool ArgFlag(const std::vector<WrenVariant>& args, size_t i) {
  if (i >= args.size() || std::holds_alternative<std::monostate>(args[i])) return false;
  if (const bool* b = std::get_if<bool>(&args[i])) return *b;
  return true;
}

/// The updater as scripts see it. It only holds a weak reference: a script object kept in the
/// parameters after the run must not keep the updater alive or reach a dead one.
std::shared_ptr<TWrenScriptObject> UpdaterObject(const std::shared_ptr<IWrenAssemblyInfoUpdater>& updater) {
  auto object = std::make_shared<TWrenScriptObject>();
  object->typeName = "IWrenAssemblyInfoUpdater";
  std::weak_ptr<IWrenAssemblyInfoUpdater> weak = updater;
  object->methods.push_back({"AddEntry", [weak](const std::vector<WrenVariant>& args) {
                               if (auto u = weak.lock())
                                 u->AddEntry(ArgText(args, 0), ArgText(args, 1), ArgFlag(args, 2));
                               return WrenVariant{};
                             }});
  object->methods.push_back({"RemoveEntry", [weak](const std::vector<WrenVariant>& args) {
                               if (auto u = weak.lock()) u->RemoveEntry(ArgText(args, 0));
                               return WrenVariant{};
                             }});
  return object;
}

/// Drops the objects handed to a script once it has run, so none outlives the run.
struct TDropObjects {
  IWrenActionScriptParams& params;
  ~TDropObjects() {
    for (IWrenActionScriptParameter& p : params.items) p.object.reset();
  }
};

}  // namespace

TWrenAssemblyInfoUpdaterAction::TWrenAssemblyInfoUpdaterAction() {
  AddScript(kOnProcessFile);
  AddScript(kOnProcessEntry);
}

std::string TWrenAssemblyInfoUpdaterAction::GetCopyRight() const {
  return "Marrowby .NET Framework Support - AssemblyInfo Updater";
}

const TPropertyTable& TWrenAssemblyInfoUpdaterAction::ClassProperties() {
  using A = TWrenAssemblyInfoUpdaterAction;
  static const TPropertyTable table =
      ChainProperties(TCustomWrenAction::ClassProperties(),
                      {StringListProperty("Selection", &A::Selection),
                       BoolProperty("BackupFiles", &A::BackupFiles),
                       BoolProperty("Recurse", &A::Recurse),
                       StringListProperty("Attributes", &A::Attributes),
                       BoolProperty("UpdateOnly", &A::UpdateOnly)});
  return table;
}

bool TWrenAssemblyInfoUpdaterAction::Validate(IWrenActionValidationError& errors) {
  if (Selection.empty()) {
    errors.AddError("Files", "No files have been added for updating");
    return false;
  }
  return true;
}

void TWrenAssemblyInfoUpdaterAction::InitialiseScriptParams(TWrenActionScript& script) {
  script.params.Add("Action", StaticClassName());
  script.params.Add("FileName", "string");
  if (SameText(script.name, kOnProcessFile)) {
    script.params.Add("AssemblyInfo", "IWrenAssemblyInfoUpdater");
  } else if (SameText(script.name, kOnProcessEntry)) {
    script.params.Add("EntryName", "string");
    script.params.Add("EntryValue", "string");
  }
}

bool TWrenAssemblyInfoUpdaterAction::Stopped() { return terminated_ || StopSignalled(); }

bool TWrenAssemblyInfoUpdaterAction::Execute() {
  terminated_ = false;
  TStrings selection;
  if (!ExpandSelection(selection) || Stopped()) {
    // A selection that cannot be expanded ends the step without an error result.
    terminated_ = false;
    return true;
  }
  const TWrenActionScript* entryScript = GetScriptByName(kOnProcessEntry);
  entryScript_ = entryScript && !Trim(entryScript->text).empty();
  const TWrenActionScript* fileScript = GetScriptByName(kOnProcessFile);
  fileScript_ = fileScript && !Trim(fileScript->text).empty();
  // Without backups or scripts a rewrite adds and removes no names, so the walk lists the same
  // files whether each is rewritten as it is found or after the whole walk; found, its folder is
  // still fresh in the caches.
  const bool stream = !BackupFiles && !entryScript_ && !fileScript_;
  fileList_.clear();
  spots_.clear();
  if (!stream) {
    for (const std::string& line : selection) {
      if (Stopped()) break;
      AddSelection(line);
    }
    if (Stopped() || fileList_.empty()) {
      terminated_ = false;
      entryScript_ = fileScript_ = true;
      return true;
    }
  }

  const std::shared_ptr<IWrenAssemblyInfoUpdater> updater = NewAssemblyInfoUpdater(UpdateOnly);
  updater->SetCallBack(this);
  literalReady_ = PrepareLiteralEntries();
  // The rewritten files are replaced together at the end: a tree of thousands of files then costs
  // two file-system syncs rather than two flushes per file.
  TWrenWriteBatch batch;
  TRun run{*updater, *updater->GetImplementation(), std::string(), true, false};
  // Without an entry script the callback leaves every value as it is.
  run.info.SetAskAboutEveryAttribute(entryScript_);
  try {
    if (stream) {
      streaming_ = &run;
      for (const std::string& line : selection) {
        if (Stopped() || run.over) break;
        AddSelection(line);
      }
      streaming_ = nullptr;
    } else {
      size_t i = 0;
      while (i < fileList_.size() && ProcessListed(i, spots_[i], run)) ++i;
    }
  } catch (const std::exception& e) {
    // The host gets a result, never an exception: the step fails with the reason logged.
    streaming_ = nullptr;
    SendMessage(e.what());
    run.result = false;
  }
  updater->SetCallBack(nullptr);
  spots_.clear();
  entryScript_ = fileScript_ = true;
  literalReady_ = false;
  std::string error;
  if (!batch.Commit(error)) {
    SendMessage(error);
    run.result = false;
  }
  terminated_ = false;
  return run.result;
}

bool TWrenAssemblyInfoUpdaterAction::ProcessListed(size_t i, TFileSpot& spot, TRun& run) {
  const std::string& file = fileList_[i];
  run.line.assign("Processing File : ").append(file);
  SendMessage(run.line);
  if (!AddEntriesToUpdater(run.updater)) {
    run.result = false;
    run.over = true;
    return false;
  }
  run.result = spot.folder ? run.info.ProcessFileIn(spot.folder, spot.name, file, BackupFiles)
                           : run.updater.ProcessFile(file, BackupFiles);
  // Done with the folder here: its handle closes once no pending write needs it.
  spot.folder.reset();
  run.over = !run.result || Stopped();
  return !run.over;
}

bool TWrenAssemblyInfoUpdaterAction::Walking() {
  return !Stopped() && !(streaming_ && streaming_->over);
}

void TWrenAssemblyInfoUpdaterAction::AddFile(std::string path, TWrenFolderRef folder,
                                             std::string name) {
  fileList_.push_back(std::move(path));
  TFileSpot spot{std::move(folder), std::move(name)};
  if (streaming_)
    ProcessListed(fileList_.size() - 1, spot, *streaming_);  // found, done: its spot is not kept
  else
    spots_.push_back(std::move(spot));
}

bool TWrenAssemblyInfoUpdaterAction::ExpandSelection(TStrings& expanded) {
  expanded.clear();
  for (const std::string& line : Selection) {
    if (Stopped()) break;
    std::string text;
    if (!TryExpandExpression("Selection", line, false, text)) return false;
    expanded.push_back(std::move(text));
  }
  return true;
}

void TWrenAssemblyInfoUpdaterAction::AddSelection(const std::string& expanded) {
  if (expanded.find_first_of("*?") == std::string::npos)
    AddFile(expanded, nullptr, std::string());
  else
    processWildCard(expanded, ExtractFileName(expanded), Recurse);
}

bool TWrenAssemblyInfoUpdaterAction::BuildFileList() {
  fileList_.clear();
  spots_.clear();
  TStrings selection;
  if (!ExpandSelection(selection)) return false;
  for (const std::string& line : selection) {
    if (Stopped()) break;
    AddSelection(line);
  }
  return true;
}

void TWrenAssemblyInfoUpdaterAction::processWildCard(const std::string& path,
                                                     const std::string& mask, bool recurse) {
  const std::string dir = ExtractFilePath(path);
  if (dir.find('\\') == std::string::npos) {
    WalkFolder(std::make_shared<TWrenFolder>(dir), mask, recurse);
    return;
  }
  // A folder spelt with backslashes is listed, but its files are then looked for by that very
  // name: only the path functions treat it alike.
  for (const TWrenFindData& found : FindFileNames(dir + "*.*", recurse)) {
    if (!Walking()) return;
    if (!found.isDirectory) {
      if (MatchesMask(found.name, mask)) AddFile(dir + found.name, nullptr, std::string());
    } else if (recurse && found.name != "." && found.name != "..") {
      processWildCard(dir + found.name + PathDelim + "*.*", mask, recurse);
    }
  }
}

void TWrenAssemblyInfoUpdaterAction::WalkFolder(const TWrenFolderRef& folder,
                                                const std::string& mask, bool recurse) {
  for (const TWrenFindData& found : FindFileNames(*folder, "*.*", recurse)) {
    if (!Walking()) return;
    if (!found.isDirectory) {
      if (MatchesMask(found.name, mask)) AddFile(folder->Path() + found.name, folder, found.name);
    } else if (recurse && found.name != "." && found.name != "..") {
      // A subfolder that cannot be opened has nothing to list.
      if (const TWrenFolderRef sub = OpenSubfolder(*folder, found.name)) {
        folder->Settle();  // a deep walk holds no more folders open than it may
        WalkFolder(sub, mask, recurse);
      }
    }
  }
  folder->Settle();
}

// Text without a '%' names no variable and stands as it is: the host need not be asked again for
// every attribute of every file.
bool TWrenAssemblyInfoUpdaterAction::Expand(const char* caption, const std::string& text,
                                            std::string& result) {
  if (text.find('%') == std::string::npos) {
    result = text;
    return true;
  }
  return TryExpandExpression(caption, text, false, result);
}

bool TWrenAssemblyInfoUpdaterAction::PrepareLiteralEntries() {
  literal_.clear();
  for (const std::string& line : Attributes) {
    if (line.empty()) continue;
    if (line.find('%') != std::string::npos) {
      literal_.clear();
      return false;
    }
    const std::string value = ValueOfLine(line);
    const bool quoted = !value.empty() && (value[0] == '"' || value[0] == '\'');
    literal_.push_back({NameOfLine(line), StripQuotes(value), quoted});
  }
  return true;
}

bool TWrenAssemblyInfoUpdaterAction::AddEntriesToUpdater(IWrenAssemblyInfoUpdater& updater) {
  if (literalReady_) {
    for (const TLiteralEntry& entry : literal_)
      updater.AddEntry(entry.name, entry.value, entry.quoted);
    return true;
  }
  for (const std::string& line : Attributes) {
    if (line.empty()) continue;
    std::string name, value;
    if (!Expand("Attributes", NameOfLine(line), name)) return false;
    if (!Expand("AttributeValue", ValueOfLine(line), value)) return false;
    const bool quoted = !value.empty() && (value[0] == '"' || value[0] == '\'');
    updater.AddEntry(name, StripQuotes(value), quoted);
  }
  return true;
}

std::shared_ptr<TWrenScriptObject> TWrenAssemblyInfoUpdaterAction::ActionObject() {
  auto object = std::make_shared<TWrenScriptObject>();
  object->typeName = StaticClassName();
  object->fields.push_back({"ClassName", [] { return WrenVariant{StaticClassName()}; }});
  return object;
}

void TWrenAssemblyInfoUpdaterAction::RunScript(TWrenActionScript& script) {
  WrenVariant result;
  if (!ExecuteScript(script.name, result))
    throw EWrenScriptFailed("Script " + script.name + " failed; the file was not updated");
}

void TWrenAssemblyInfoUpdaterAction::OnProcessFile(
    const std::string& fileName, const std::shared_ptr<IWrenAssemblyInfoUpdater>& updater) {
  if (!fileScript_) return;  // asked for every file: most runs have no such script
  TWrenActionScript* script = GetScriptByName(kOnProcessFile);
  if (!script || Trim(script->text).empty()) return;
  InitialiseScriptParams(*script);
  IWrenActionScriptParams& params = script->params;
  params.Find("Action")->object = ActionObject();
  params.Find("FileName")->value = fileName;
  IWrenActionScriptParameter* info = params.Find("AssemblyInfo");
  info->object = UpdaterObject(updater);
  const TDropObjects drop{params};
  RunScript(*script);
}

void TWrenAssemblyInfoUpdaterAction::AssemblyInfoProcessMessage(const std::string& message) {
  SendMessage(message);
}

void TWrenAssemblyInfoUpdaterAction::AssemblyInfoProcessEntry(const std::string& fileName,
                                                              const std::string& entryName,
                                                              std::string& entryValue) {
  // Asked for every attribute of every file: most runs have no such script.
  if (!entryScript_) return;
  TWrenActionScript* script = GetScriptByName(kOnProcessEntry);
  if (!script || Trim(script->text).empty()) return;
  InitialiseScriptParams(*script);
  IWrenActionScriptParams& params = script->params;
  params.Find("Action")->object = ActionObject();
  params.Find("FileName")->value = fileName;
  params.Find("EntryName")->value = entryName;
  params.Find("EntryValue")->value = entryValue;
  const TDropObjects drop{params};
  RunScript(*script);
  entryValue = VariantToString(params.Find("EntryValue")->value);
}

}  // namespace wren
