// A host program built against the installed package: it reads the version
// symbols, uses a host stream and opens an in-memory OCI environment.
#include <varnadp.h>
#include <host/kel.h>

#include <cstdio>
#include <cstring>

int main() {
  CKelStream stream(0, nullptr, nullptr, 0);
  stream.Write("a|b", 3);
  stream.Seek(0, 0);
  char buf[4] = {};
  if (stream.Read(buf, 3) != 3 || std::strcmp(buf, "a|b") != 0) return 1;

  OCIEnv* env = nullptr;
  if (OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) != OCI_SUCCESS)
    return 2;
  OCIHandleFree(env, OCI_HTYPE_ENV);

  std::printf("%s %s consumer ok\n", szMainProductName, szVersion);
  return 0;
}
