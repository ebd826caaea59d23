#!/bin/sh
# The library cannot print, read the environment, start programs, map files or change the state of its process: it imports no function
# for that. imports_test.sh LIBRARY
#
# A library that contains expat has expat's debugging code, which reads EXPAT_... variables and prints to standard error.
set -eu
forbidden='_ZSt4cout _ZSt4cerr _ZSt4clog _exit abort chdir clearenv dup2 execl execlp execv execve execvp exit fopen fork getenv kill mmap
mmap64 openat popen posix_spawn posix_spawnp printf __printf_chk fprintf __fprintf_chk putchar putenv puts raise secure_getenv setenv
setlocale signal sigaction system umask uselocale vfork vprintf write writev'
if nm "$1" | grep -q ' [tT] XML_ParserCreate$'; then
  forbidden=$(printf ' %s ' "$forbidden" | tr '\n' ' ' | sed 's/ getenv / /; s/ fprintf / /; s/ __fprintf_chk / /')
fi
imported=$(nm -D --undefined-only "$1" | awk '{ sub(/@.*/, "", $2); print $2 }')
[ "$(echo "$imported" | grep -cx 'memcpy')" = 1 ] || { echo 'the list of imports is not complete' >&2; exit 1; }
status=0
for name in $forbidden; do
  if echo "$imported" | grep -qx "$name"; then
    echo "imported: $name" >&2
    status=1
  fi
done
exit "$status"
