#!/usr/bin/env bash
# Writes a build project of N actions to stdout, for measuring how loading scales:
#   bench/load_gen_project.sh 100000 > /tmp/big.mbproj
# The actions cycle through the kinds a real project holds (signing, resources, compilers, tests),
# each with a description and the properties such a step usually sets, so the file is about as
# dense as a hand-written one.
set -euo pipefail
count=${1:?usage: load_gen_project.sh ACTIONS}
awk -v n="$count" 'BEGIN {
  print "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
  print "<MarrowbyProject version=\"1\">"
  print "  <Variables>"
  print "    <Variable name=\"VERSION\">1.2.3.4</Variable>"
  print "    <Variable name=\"BIN\">%ProjectDir%/bin</Variable>"
  print "  </Variables>"
  print "  <Actions>"
  for (i = 0; i < n; i++) {
    k = i % 5
    if (k == 0) {
      printf "    <Action class=\"TSNGenerateKeyPair\" description=\"Key %d\">\n", i
      printf "      <Property name=\"OutputFile\">%%BIN%%/key%d.snk</Property>\n", i
    } else if (k == 1) {
      printf "    <Action class=\"TWrenResGenAction\" description=\"Resources %d\">\n", i
      printf "      <Property name=\"InputFiles\">%%ProjectDir%%/res/Strings%d.resx</Property>\n", i
      printf "      <Property name=\"OutputFile\">%%BIN%%/Strings%d.resources</Property>\n", i
    } else if (k == 2) {
      printf "    <Action class=\"TWrenCSharpCompilerAction\" description=\"Library %d\">\n", i
      print  "      <Property name=\"NoLogo\">true</Property>"
      print  "      <Property name=\"Target\">Lib</Property>"
      print  "      <Property name=\"ProjectDir\">%ProjectDir%</Property>"
      printf "      <Property name=\"OutputFile\">%%BIN%%/Lib%d.dll</Property>\n", i
      printf "      <Property name=\"Files\">src/Lib%d/AssemblyInfo.cs;src/Lib%d/Code.cs</Property>\n", i, i
    } else if (k == 3) {
      printf "    <Action class=\"TSNVerifyAssembly\" enabled=\"false\" description=\"Check %d\">\n", i
      printf "      <Property name=\"Assembly\">%%BIN%%/Lib%d.dll</Property>\n", i - 1
    } else {
      printf "    <Action class=\"TWrenNUnitAction\" description=\"Tests %d\">\n", i
      print  "      <Property name=\"Assemblies\">"
      printf "        <Item>%%BIN%%/Lib%d.Tests.dll</Item>\n", i
      print  "      </Property>"
      print  "      <Property name=\"NoLogo\">true</Property>"
    }
    print "    </Action>"
  }
  print "  </Actions>"
  print "</MarrowbyProject>"
}'
