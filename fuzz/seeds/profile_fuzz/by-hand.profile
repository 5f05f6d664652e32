# my own
[profile]
version = 1
  name="Work \"A\""  

[service 0101010101010101010101010101010a]
PR_SERVICE_NAME = unicode:"MSPST MS"
[provider 0202020202020202020202020202020B]
# a comment
PR_RESOURCE_TYPE = long:0x21
PR_PST_PATH = unicode:"/home/jörg/a = b.pst"
0x7777=binary:00ff
[section 03030303030303030303030303030303]
[global]
PR_STORE_PROVIDERS = binary:0202020202020202020202020202020B
[end]
# the end
