// Reads Visual Studio 2002/2003 project files (<VisualStudioProject>) into plain data: the
// project-wide settings, one chosen configuration, the references and the file list.
#pragma once

#include <string>
#include <vector>

#include "WrenTypes.h"

namespace pugi {
class xml_document;
}

namespace wren {

/// The language element of a project file; smart-device projects use the E-prefixed forms.
enum class TVSLanguage { CSharp, VisualBasic, JSharp };

/// One <Reference> of a project, whatever its kind (assembly, project or COM).
struct TVSReference {
  std::string name;
  std::string assemblyName;
  std::string hintPath;
  std::string assemblyFolderKey;
  std::string project;  // the other project's GUID for a project reference
  std::string guid;     // the type library's GUID for a COM reference
  std::string wrapperTool;
  std::string platform;
  std::string privateCopy;  // "False" keeps the assembly out of the output folder
  int versionMajor = 0;
  int versionMinor = 0;
  int lcid = 0;

  bool IsProject() const { return !project.empty(); }
  bool IsCom() const { return !guid.empty(); }
};

/// One <File> of a project.
struct TVSFile {
  std::string relPath;
  std::string buildAction;
  std::string subType;
  std::string dependentUpon;
  std::string link;
};

/// A loaded project with its chosen configuration.
struct TVSProject {
  std::string fileName;  // as given
  std::string dir;       // the project's folder, with a trailing delimiter
  TVSLanguage language = TVSLanguage::CSharp;
  bool smartDevice = false;
  std::string guid;
  std::string configName;  // the chosen configuration's name as the file spells it
  TStrings configNames;    // every configuration, in file order
  TStrings settings;       // name=value pairs of <Settings>
  TStrings config;         // name=value pairs of the chosen <Config>
  std::vector<TVSReference> references;
  TStrings imports;
  std::vector<TVSFile> files;

  std::string Setting(const std::string& name) const;
  std::string ConfigValue(const std::string& name) const;
  /// A boolean of the chosen configuration: "true" in any case; empty or absent gives def.
  bool ConfigFlag(const std::string& name, bool def = false) const;
  /// The output's extension: ".dll" for libraries, ".exe" otherwise.
  std::string OutputExtension() const;
  /// AssemblyName with the extension ("Lib.dll").
  std::string OutputFileName() const;
  /// OutputPath of the configuration with AssemblyName and extension, as a native path relative
  /// to the project folder.
  std::string RelativeOutputFile() const;
};

/// The language of a project file by its extension ("" for an unknown one is not a project).
bool VSLanguageOfExtension(const std::string& fileName, TVSLanguage& language);

/// Loads a project file's XML; false with a reason ("the file does not exist", not well-formed).
bool LoadProjectXml(const std::string& fileName, pugi::xml_document& doc, std::string& error);

/// Loads fileName and chooses configName among its <Config> elements: by full name
/// ("Debug|Pocket PC"), or by the part before the platform when that is unambiguous. False with
/// the cause in error when the file is missing or not a project, or the configuration is unknown
/// (the cause then lists the project's configurations).
bool ReadVSProject(const std::string& fileName, const std::string& configName, TVSProject& project,
                   std::string& error);

/// A project path with its backslashes turned into this system's delimiter.
std::string NativePath(const std::string& path);

/// The namespace-qualified name of the first class that source declares, in the syntax of the
/// language (C# and VB namespaces, J# packages); "" when it declares none.
std::string FirstDeclaredClass(const std::string& source, TVSLanguage language);

/// The name under which Visual Studio embeds a file: Link files by their RelPath, a form's .resx
/// after the class of the file it depends on (formClass, "" when not known), others after the root
/// namespace and their folder (C#, J#) or the root namespace alone (VB); .resx becomes .resources.
std::string VSManifestName(const TVSProject& project, const TVSFile& file,
                           const std::string& formClass);

}  // namespace wren
