package Stacks is
   type Stack is private;
   procedure Push (S : in out Stack; Item : Integer);
   function Pop (S : in out Stack) return Integer;
   function Size (S : Stack) return Natural;

   package Inner is
      procedure Reset;
   end Inner;

   generic
      type Element is private;
   package Generic_Store is
      procedure Put (E : Element);
   end Generic_Store;
private
   type Stack is record
      Top : Natural := 0;
   end record;
end Stacks;
