@0xc2d5a9b7f4e81630;
# A unicast update as Cap'n Proto would carry it.

struct Hop {
  intf @0 :UInt32;
  domain @1 :UInt32;
}

struct Route {
  fcid @0 :UInt32;
  mask @1 :UInt32;
  carried @2 :UInt64;
  action @3 :UInt32;
  metric @4 :UInt32;
  flag @5 :UInt32;
  hops @6 :List(Hop);
}

struct Update {
  uuid @0 :UInt32;
  vsan @1 :UInt32;
  oper @2 :UInt32;
  versions @3 :List(UInt32);
  routes @4 :List(Route);
}
