// One host thread's work with the library, written as a host writes it: a connection
// (an OCI environment of its own, or an error handle and a session of its own on an
// environment shared by threads), a context of its own and a Column_Def list of its own.
// Each iteration builds an order object through OCI calls, writes it to a stream, reads
// the stream back into a new instance, stores that instance, runs the large-object pass,
// commits and reads the row back; then reads a broken stream, which fails. The thread's
// trace records every field.
#ifndef TESTS_THREADS_HOST_THREAD_H_
#define TESTS_THREADS_HOST_THREAD_H_

#include <initializer_list>
#include <string>
#include <vector>

#include <oci.h>
#include <orid.h>
#include <varnadp.h>

namespace threads_test {

// The user every thread logs on as, and the schema that holds the types.
extern const char kUser[];
extern const char kPassword[];
extern const char kSchema[];

// What one thread produced, in order: for each iteration the written stream, the stream
// of the row read back, the two large objects read back, the error of a broken stream's
// read and the iteration's trace. `failure` names the first call that failed, empty when
// none did.
enum { kItemsPerIteration = 6 };
struct ThreadOutput {
  std::vector<std::string> items;
  std::string failure;
};

// A host's connection to one database.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { Close(); }

  // Logs on to `db`. With `shared_env` NULL the connection makes an OCI_THREADED object-mode
  // environment of its own; otherwise it allocates its error handle from the shared one
  // and logs on with a session of its own.
  bool Open(OCIEnv* shared_env, const std::string& db);
  // Logs off and frees what Open made. Returns false when a call failed.
  bool Close();

  // Records a failed call (with Oracle's message) as the first failure; returns ok.
  bool Check(sword status, const std::string& what);
  bool Exec(const std::string& sql);
  OCIType* Type(const char* name);

  OCIEnv* env() const { return env_; }
  OCIError* err() const { return err_; }
  OCISvcCtx* svc() const { return svc_; }
  const std::string& failure() const { return failure_; }
  void Fail(const std::string& what) {
    if (failure_.empty()) failure_ = what;
  }

 private:
  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  bool own_env_ = false;
  std::string failure_;
};

// Creates the types and the table the threads work on, through `conn`.
bool CreateSchema(Connection* conn);

// The work of thread number `thread` (0-based): `iterations` orders, each with an id of
// its own, on the given connection. A failed iteration ends the work.
ThreadOutput RunThread(Connection* conn, int thread, int iterations);

}  // namespace threads_test

#endif  // TESTS_THREADS_HOST_THREAD_H_
