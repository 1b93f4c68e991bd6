// A client built only against the installed package: it loads the module file, creates the
// document manager, opens a sync root and asks the root's path manager for a relative path.
#include <cstdio>
#include <cstring>
#include <vector>

#include "docmgr/ncIDocMgr.h"
#include "docmgr/ncIPathMgr.h"
#include "docmgr/nsHostLoader.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: consumer ROOT\n");
    return 2;
  }
  nsHostLoader host;
  if (NS_FAILED(host.loadModule(DOCMGR_MODULE_FILE))) {
    std::fprintf(stderr, "cannot load %s: %s\n", DOCMGR_MODULE_FILE, host.lastError().c_str());
    return 1;
  }
  const base::String root(argv[1], argv[1] + std::strlen(argv[1]));  // an ASCII path
  nsCOMPtr<ncIDocMgr> docMgr = host.create<ncIDocMgr>(NC_DOCMGR_CONTRACTID);
  if (!docMgr) return 1;
  docMgr->Init(root, root, std::vector<ncTopFolderInfo>(), false, u"consumer");
  nsCOMPtr<ncIPathMgr> paths = nsCOMPtr<ncIPathMgr>::adopt(docMgr->GetPathMgr(u""));
  const bool ok = paths->GetRelativePath(root + u"/Projects/plan.docx") == u"Projects\\plan.docx";
  docMgr->Close();
  std::puts(ok ? "ok" : "wrong relative path");
  return ok ? 0 : 1;
}
