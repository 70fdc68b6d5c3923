# Visual Basic, on the assembly and with the compiler package of C#. The compiler warns that it does
# without System.dll, a library of .NET Framework.
source "$root/scripts/languages/csharp.sh"

build() {
  fetch_dotnet
  mkdir -p "$out"
  build_binding
  compile_vb Pdv.dll examples/vb/Pdv.vb
}
build_probe() {  # on that of C#
  compile csc Provas.dll tests/languages/provas.cs -langversion:7.3 -nostdlib -r:CaixoraTef.dll
  [ "$out/ProvasVb.dll" -nt "$out/Provas.dll" ] || rm -f "$out/ProvasVb.dll"
  compile_vb ProvasVb.dll tests/languages/provas.vb -r:Provas.dll
}

compile_vb() {
  compile vbc "$@" -r:CaixoraTef.dll -nosdkpath '-vbruntime*' '-define:_MYTYPE="Empty"'
}

run_probe() { run_program ProvasVb.dll; }
