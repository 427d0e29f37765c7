package body Stacks is
   procedure Push (S : in out Stack; Item : Integer) is
   begin
      S.Top := S.Top + Item;
   end Push;

   function Pop (S : in out Stack) return Integer is
   begin
      S.Top := S.Top - 1;
      return S.Top;
   end Pop;

   function Size (S : Stack) return Natural is separate;

   package body Inner is
      procedure Reset is
      begin
         null;
      end Reset;
   end Inner;

   package body Generic_Store is
      procedure Put (E : Element) is
      begin
         null;
      end Put;
   end Generic_Store;
end Stacks;
