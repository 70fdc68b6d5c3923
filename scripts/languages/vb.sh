# Visual Basic, on the assembly and with the compiler package of C#. The compiler warns that it does
# without System.dll, a library of .NET Framework.
source "$root/scripts/languages/csharp.sh"

build() {
  fetch_dotnet
  mkdir -p "$out"
  build_binding
  compile vbc Pdv.dll examples/vb/Pdv.vb -r:CaixoraTef.dll -nosdkpath '-vbruntime*' \
    '-define:_MYTYPE="Empty"'
}
