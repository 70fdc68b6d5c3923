"""Writes include/caixora.h as Markdown on the standard output: its introduction, then a heading for
each section and function, with its declaration and what its comment says."""
import re
import sys


def prose(comment):
    """The text of a comment; a block that is indented as a whole is shown as it stands."""
    blocks = re.sub(r"(?m)^ ?\* ?", "", comment).strip("\n ").split("\n\n")
    return "\n\n".join(
        re.sub("(?m)^", " ", block) if all(line[:3] == "   " for line in block.split("\n"))
        else re.sub(r"([<*])", r"\\\1", block) for block in blocks)


source = open(sys.argv[1], encoding="ascii").read()
introduction = source[:source.index("#ifndef")]
# The lines of the preprocessor, before the first section and at the end, are for compilers.
parts = source[source.index("/* ---- "):source.rindex("#ifdef")].strip().split("\n\n")
print("# caixora.h\n\n" + prose(introduction[3:introduction.rindex("*/")]))
for part in parts:
    comment, declaration = re.fullmatch(r"/\*(.*?)\*/\n?(.*)", part, re.S).groups()
    if not declaration:
        print("\n## " + comment.strip(" -"))
        continue
    name = re.search(r"CAIXORA_CALL (\w+)|(CAIXORA_QJ)_", declaration)
    print(f"\n### {name[1] or name[2]}\n\n```c\n{declaration}\n```\n\n{prose(comment)}")
